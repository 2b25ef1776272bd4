// The stack of levels, and the trie kept in step with it push by push, so that a read cuts at the
// separators of the current depth without a rebuild. Push and pop run for every nested value read:
// this is the hot half of the list besides the inline read.

#include "parsing/SeparatorList.h"

#include <array>

#include "definitions/PrimitiveTypeDefn.h"

#include "definitions/SeparatorDefn.h"

namespace vantrelia {

void SeparatorList::addLevelSequences(ESeparatorType index, std::u16string_view text, int32_t level) {
  if (text.empty()) return;
  trie->addSequence(index, text, SeparatorTrieNode::kSeparator, level);
  if (index != qxSepString && index != qxSepNone) {
    const SeparatorDefn& defn = defnOf(index);
    if ((defn.getFlags() & SeparatorDefn::kVariable) && defn.getTerminator().length() != 0) {
      trie->addSequence(index, defn.getTerminator().view(), SeparatorTrieNode::kSeparator, level);
    }
  }
}

void SeparatorList::pushSeparator(ESeparatorType index, std::u16string_view specialString, bool levelFixed) {
  checkSeparatorIndex(index);
  currentSeparator = index;
  levels.push_back(index);
  levelMask |= 1u << index;
  if (index == qxSepString) specialStrings.emplace_back(specialString);
  // Fixed width, once on, stays on for all that is nested in it.
  levelFixedWidth.push_back(levelFixed || (!levelFixedWidth.empty() && levelFixedWidth.back()) ? 1 : 0);
  if (trieDirty) {
    // The next read builds a new trie from the stack anyway; a write never reads.
    poppedOutOfForce.clear();
    return;
  }
  stepTrieUp(index, levelText(index));
}

void SeparatorList::stepTrieUp(ESeparatorType index, std::u16string_view text) {
  trie->setLevel(trie->getLevel() + 1);
  // The separator just popped from this very level comes back: its sequence still stands at this
  // level, so neither the pop nor the push has to touch the trie.
  if (!poppedOutOfForce.empty()) {
    const PoppedSequence& last = poppedOutOfForce.back();
    if (last.index == index && last.level == trie->getLevel() && last.text == text) {
      // Those still waiting stand deeper than this level, so they stay out of force.
      poppedOutOfForce.pop_back();
      return;
    }
    flushOutOfForce();
  }
  addLevelSequences(index, text, trie->getLevel());
}

ESeparatorType SeparatorList::popSeparator() {
  if (levels.empty()) return static_cast<ESeparatorType>(currentSeparator);
  const ESeparatorType index = levels.back();
  levels.pop_back();
  noteLevels();
  if (!levelFixedWidth.empty()) levelFixedWidth.pop_back();
  currentSeparator = levels.empty() ? qxSepSegment : levels.back();
  // A popped string's text stays in the list until the trie is done with it.
  const std::u16string_view text = index == qxSepString ? std::u16string_view(specialStrings.back()) : levelText(index);
  if (!trieDirty) {
    trie->setLevel(trie->getLevel() - 1);
    // Once the root's level is below it, the sequence is out of force for reads already; it is
    // taken out for every level only when a push could raise the level to it again
    // (flushOutOfForce).
    const bool mayShare = !text.empty() && (index == qxSepString || !specialStrings.empty() ||
                                            (levelMask >> index & 1u) || (slotsSharingText() >> index & 1u));
    if (mayShare && restoreSharedText(text)) {
      // The node stands for the outer level now: nothing is left to take out of force.
    } else if (index == qxSepString) {
      // A pushed string goes with its level, so it is taken out of force at once. The root's
      // level is below it from here on either way, so reads see no difference.
      addLevelSequences(index, text, SeparatorTrieNode::kOutOfForce);
    } else if (!text.empty()) {
      poppedOutOfForce.push_back({index, trie->getLevel() + 1, text});
    }
  }
  if (index == qxSepString) specialStrings.pop_back();
  return static_cast<ESeparatorType>(currentSeparator);
}

bool SeparatorList::restoreSharedText(std::u16string_view text) {
  // The deepest level left that has the text wins, as in a build, which adds the levels outermost
  // first.
  auto pushedString = specialStrings.begin();
  int32_t found = -1;
  for (size_t i = 0; i < levels.size(); ++i) {
    std::u16string_view own;
    if (levels[i] == qxSepString) {
      if (pushedString != specialStrings.end()) own = *pushedString++;
    } else {
      own = levelText(levels[i]);
    }
    if (own == text) found = static_cast<int32_t>(i);
  }
  if (found < 0) return false;
  // The sequences that wait to go out of force stand deeper than the popped level: none of them
  // is on this node's path from the stack any more once they go, so they go first.
  flushOutOfForce();
  trie->addSequence(levels[static_cast<size_t>(found)], text, SeparatorTrieNode::kSeparator, found + 1);
  return true;
}

void SeparatorList::workOutSharedTexts() const {
  sharedTexts = 0;
  // Slots are compared in full only where their first characters meet, which they rarely do.
  std::array<int8_t, 128> lastWithFirst;
  lastWithFirst.fill(-1);
  std::array<int8_t, kSeparatorSlots> previousWithFirst;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    previousWithFirst[static_cast<size_t>(i)] = -1;
    const std::u16string_view text = slots[static_cast<size_t>(i)].value.view();
    if (text.empty()) continue;
    if (text.front() >= lastWithFirst.size()) {
      // Beyond ASCII: against every other slot.
      for (int32_t j = 0; j < i; ++j) {
        if (slots[static_cast<size_t>(j)].value.view() == text) sharedTexts |= 1u << i | 1u << j;
      }
      continue;
    }
    int8_t& last = lastWithFirst[text.front()];
    for (int8_t j = last; j >= 0; j = previousWithFirst[static_cast<size_t>(j)]) {
      if (slots[static_cast<size_t>(j)].value.view() == text) sharedTexts |= 1u << i | 1u << j;
    }
    previousWithFirst[static_cast<size_t>(i)] = last;
    last = static_cast<int8_t>(i);
  }
  sharedTextsVersion = slotsVersion;
}

void SeparatorList::flushOutOfForce() {
  // Out of force for every level: a sequence in use on two levels at once goes for the outer one
  // too, until the trie is rebuilt.
  if (!trieDirty) {
    for (const PoppedSequence& popped : poppedOutOfForce) {
      addLevelSequences(popped.index, popped.text, SeparatorTrieNode::kOutOfForce);
    }
  }
  poppedOutOfForce.clear();
}

void SeparatorList::restoreLevels() {
  releaseTrie();
  levels = savedLevels;
  noteLevels();
  currentSeparator = levels.empty() ? qxSepSegment : levels.back();
  trieDirty = true;
}

void SeparatorList::saveLevelsAllowing(const PrimitiveTypeDefn& type) {
  releaseTrie();
  saveLevels();
  // A string level keeps its place, since the k-th of them owns the k-th pushed string.
  for (ESeparatorType& level : levels) {
    if (level != qxSepString && level != qxSepNone && type.isSeparatorAllowed(level)) level = qxSepNone;
  }
  noteLevels();
  trieDirty = true;
}

void SeparatorList::saveAndPopTo(ESeparatorType index) {
  std::vector<PoppedLevel>& popped = stackSaver.emplace_back();
  while (!levels.empty() && levels.back() != index) {
    const ESeparatorType top = levels.back();
    PoppedLevel level{top, {}, !levelFixedWidth.empty() && levelFixedWidth.back() != 0};
    if (top == qxSepString) level.specialString = pushedString();
    popped.push_back(std::move(level));
    popSeparator();
  }
}

void SeparatorList::restorePopped() {
  if (stackSaver.empty()) return;
  std::vector<PoppedLevel> popped = std::move(stackSaver.back());
  stackSaver.pop_back();
  for (auto it = popped.rbegin(); it != popped.rend(); ++it) pushSeparator(it->index, it->specialString, it->fixedWidth);
}

}  // namespace vantrelia
