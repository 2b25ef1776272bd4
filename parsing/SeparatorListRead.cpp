// The reads that leave the inline path: the first read after a change builds the trie, a field type
// with escape marks brings them into force for one read, and a value in double quotes runs to its
// closing quote.

#include "parsing/SeparatorList.h"

#include <algorithm>
#include <array>

#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/FoundationMessages.h"
#include "foundation/IllegalOperation.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorTriePool.h"

namespace vantrelia {

namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";
// The generic trie sees these all at once, at a level above any nesting.
constexpr ESeparatorType kGenericSeparators[] = {qxSepSegment, qxSepRepeat, qxSepField1, qxSepField2, qxSepField3,
                                                 qxSepField4,  qxSepField5, qxSepMessage, qxSepGroup};
constexpr int32_t kGenericLevel = 200;

}  // namespace

std::u16string SeparatorList::trieKey() const {
  // A key is made for every trie taken that no settled header handed on, several per message: it
  // is written in one pass, into a buffer on the stack for all but the longest separators. It
  // starts with the slots in use and those settled, as bits; the texts of those slots follow,
  // each behind its length (a variable separator's terminator and its replacement come from its
  // definition: they are in the key, so that a trie never serves the set of another definition
  // that sits where this one did).
  //
  // With one text at two places (a component separator that is also the segment terminator, a
  // separator that is also a replacement), which of them a node stands for depends on the order
  // of the pushes that made the trie; such tries are built afresh each time, and the key is empty.
  constexpr size_t kTexts = 4 * kSeparatorSlots;
  std::array<std::u16string_view, kTexts> texts;
  size_t count = 0;
  uint32_t active = 0;
  uint32_t known = 0;
  size_t length = 4;
  // Texts that begin with the same character are compared in full; most begin each with its own.
  // A character beyond the table's range counts as one shared.
  std::array<uint64_t, 2> firstSeen{};
  std::array<uint64_t, 2> firstShared{};
  bool wideFirst = false;
  const auto bitOf = [](const std::array<uint64_t, 2>& words, char16_t c) { return words[c >> 6] >> (c & 63) & 1u; };
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    if (!slot.active && !slot.known) continue;
    active |= (slot.active ? 1u : 0u) << i;
    known |= (slot.known ? 1u : 0u) << i;
    const bool variable = slot.isVariable();
    for (const std::u16string_view text :
         {std::u16string_view(slot.value), std::u16string_view(slot.replacementValue),
          variable ? slot.terminator() : std::u16string_view(), variable ? slot.terminatorReplacement() : std::u16string_view()}) {
      texts[count++] = text;
      length += 2 + text.size();
      if (text.empty()) continue;
      const char16_t first = text.front();
      if (first > 127) {
        wideFirst = true;
        continue;
      }
      if (bitOf(firstSeen, first)) firstShared[first >> 6] |= uint64_t{1} << (first & 63);
      firstSeen[first >> 6] |= uint64_t{1} << (first & 63);
    }
  }
  if (wideFirst || firstShared[0] || firstShared[1]) {
    const auto compared = [&](std::u16string_view text) {
      return !text.empty() && (text.front() > 127 || bitOf(firstShared, text.front()));
    };
    for (size_t i = 0; i < count; ++i) {
      if (!compared(texts[i])) continue;
      for (size_t j = i + 1; j < count; ++j) {
        if (texts[j] == texts[i]) return {};
      }
    }
  }
  std::u16string key(length, u'\0');
  char16_t* out = key.data();
  const auto addNumber = [&out](size_t number) {
    *out++ = static_cast<char16_t>(number >> 16);
    *out++ = static_cast<char16_t>(number);
  };
  addNumber(active);
  addNumber(known);
  for (size_t i = 0; i < count; ++i) {
    addNumber(texts[i].size());
    for (const char16_t c : texts[i]) *out++ = c;
  }
  return key;
}

void SeparatorList::keepTrieKey() {
  keptTrieKey = std::make_shared<const std::u16string>(trieKey());
  keptTrieKeyVersion = slotsVersion;
  workOutCutStops();
}

bool SeparatorList::beginsLongerSequence(char16_t c) const {
  const auto begins = [c](std::u16string_view text) { return text.size() > 1 && text.front() == c; };
  for (const SeparatorImpl& slot : slots) {
    if (begins(slot.value) || begins(slot.replacementValue) || begins(slot.terminatorReplacement()) ||
        begins(slot.terminator()) || begins(slot.defn->getReplacementValue().view()) ||
        begins(slot.defn->getTerminatorReplacement().view()) || begins(slot.defn->getTerminator().view())) {
      return true;
    }
  }
  return false;
}

std::u16string SeparatorList::charactersThatMayStop() const {
  std::u16string stops = u"\"\r\n";
  stops += u'\0';
  const auto add = [&stops](std::u16string_view text) {
    if (!text.empty() && stops.find(text.front()) == std::u16string::npos) stops += text.front();
  };
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    // The null, decimal and filler marks belong to data and end nothing; what stands for them may.
    const bool ends = i != qxSepNull && i != qxSepDecimal && i != qxSepFiller;
    if (ends) {
      add(slot.value);
      add(slot.terminator());
    }
    add(slot.replacementValue);
    add(slot.terminatorReplacement());
    if (!slot.defn) continue;
    if (ends) {
      add(slot.defn->getValue().view());
      add(slot.defn->getInitiator().view());
      add(slot.defn->getTerminator().view());
    }
    add(slot.defn->getReplacementValue().view());
    add(slot.defn->getTerminatorReplacement().view());
  }
  return stops;
}

void SeparatorList::releaseTrie() {
  // Only a trie made for the slots as they stand goes, under the key it was made with: slots
  // changed since without the trie marked for a rebuild leave it out of step with any key.
  if (trieDirty || !trie || genericTrie || keptTrieKeyVersion != slotsVersion || !keptTrieKey ||
      keptTrieKey->empty()) {
    return;
  }
  SeparatorTriePool* pool = SeparatorTriePool::local();
  if (!pool) return;
  // What stands popped at a level above is taken out of force now, while the slot texts it
  // points into still stand: the pool keeps no views.
  flushOutOfForce();
  pool->give({messageSet, keptTrieKey, levels, specialStrings, std::move(trie)});
  trieDirty = true;
}

bool SeparatorList::adoptTrie() {
  SeparatorTriePool* pool = genericTrie ? nullptr : SeparatorTriePool::local();
  if (!pool) return false;
  std::shared_ptr<const std::u16string> key = keptTrieKeyVersion == slotsVersion && keptTrieKey
                                                  ? keptTrieKey
                                                  : std::make_shared<const std::u16string>(trieKey());
  std::optional<SeparatorTriePool::Spare> spare;
  if (!key->empty()) spare = pool->take(*messageSet, *key);
  if (!spare) {
    // The build that follows serves these slots: its key is this one.
    keptTrieKey = std::move(key);
    keptTrieKeyVersion = slotsVersion;
    return false;
  }
  keptTrieKey = std::move(key);
  keptTrieKeyVersion = slotsVersion;
  trie = std::move(spare->trie);
  trieDirty = false;
  poppedOutOfForce.clear();
  const Levels& from = spare->levels;
  // The trie is in step with the stack it came with. Most often that stack is the start of this
  // list's, and pushes of the rest bring the trie in step.
  const bool prefix = from.size() <= levels.size() && std::equal(from.begin(), from.end(), levels.begin()) &&
                      specialStrings.empty() && spare->specialStrings.empty();
  if (prefix) {
    for (size_t i = from.size(); i < levels.size(); ++i) stepTrieUp(levels[i], levelText(levels[i]));
    return true;
  }
  // Else pops down to what the two stacks share and pushes of the rest, as if this list had made
  // those moves itself.
  const Levels target = levels;
  const std::list<std::u16string> targetStrings = specialStrings;
  const auto targetFixedWidth = levelFixedWidth;
  const int32_t targetCurrent = currentSeparator;
  levels = std::move(spare->levels);
  specialStrings = std::move(spare->specialStrings);
  levelFixedWidth.assign(levels.size(), 0);
  noteLevels();
  size_t shared = 0;
  auto theirString = specialStrings.begin();
  auto ourString = targetStrings.begin();
  while (shared < levels.size() && shared < target.size() && levels[shared] == target[shared]) {
    if (levels[shared] == qxSepString) {
      if (theirString == specialStrings.end() || ourString == targetStrings.end() || *theirString != *ourString) break;
      ++theirString;
      ++ourString;
    }
    ++shared;
  }
  while (levels.size() > shared) popSeparator();
  for (size_t i = shared; i < target.size(); ++i) {
    const std::u16string_view special = target[i] == qxSepString && ourString != targetStrings.end()
                                            ? std::u16string_view(*ourString++)
                                            : std::u16string_view();
    pushSeparator(target[i], special, false);
  }
  levelFixedWidth = targetFixedWidth;
  currentSeparator = targetCurrent;
  noteLevels();
  return true;
}

void SeparatorList::buildTrie() {
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  if (adoptTrie()) {
    // Held to what a build gives: the same sequences in force at the level of the moment.
    const std::vector<std::u16string> adopted = trie->sequencesInForce();
    std::unique_ptr<SeparatorTrieNode> taken = std::move(trie);
    const std::vector<PoppedSequence> popped = poppedOutOfForce;
    makeTrie();
    const bool same = trie->sequencesInForce() == adopted;
    trie = std::move(taken);
    poppedOutOfForce = popped;
    if (!same) throw IllegalOperation(messages::kInternalError);
    return;
  }
#else
  if (adoptTrie()) return;
#endif
  makeTrie();
}

void SeparatorList::makeTrie() {
  poppedOutOfForce.clear();
  trie = std::make_unique<SeparatorTrieNode>();
  trie->setLevel(static_cast<int32_t>(levels.size()));
  // A pushed string keeps its place on the stack too: the k-th qxSepString level owns the k-th
  // entry of specialStrings.
  auto pushedString = specialStrings.begin();
  for (size_t i = 0; i < levels.size(); ++i) {
    const ESeparatorType index = levels[i];
    const int32_t level = static_cast<int32_t>(i + 1);
    if (index == qxSepNone) continue;
    if (index == qxSepString) {
      if (pushedString != specialStrings.end()) addLevelSequences(index, *pushedString++, level);
      continue;
    }
    if (slots[static_cast<size_t>(index)].active) addLevelSequences(index, slots[static_cast<size_t>(index)].value, level);
  }

  auto addReplacements = [this](SeparatorTrieNode& root, int32_t level) {
    for (int32_t i = 0; i < kSeparatorSlots; ++i) {
      const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
      if (!slot.known) continue;
      SeparatorTrieNode* node =
          root.addSequence(i, slot.replacementValue, SeparatorTrieNode::kReplacement, level, slot.value);
      if (node && i == qxSepCrlf && slot.replacementValue == kLineEnd) node->setIsCrlf(true);
      if (slot.isVariable()) {
        root.addSequence(i, slot.terminatorReplacement(), SeparatorTrieNode::kReplacement, level, slot.terminator());
      }
    }
  };

  if (genericTrie) {
    const int32_t level = genericTrie->getLevel();
    for (const ESeparatorType index : kGenericSeparators) {
      const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
      if (slot.known && !slot.value.empty()) genericTrie->addSequence(index, slot.value, SeparatorTrieNode::kSeparator, level);
    }
    addReplacements(*genericTrie, level);
    genericTrie->setLevel(kGenericLevel);
  }
  // Replacements stand for data at every depth, so they go in at level 0 rather than at the depth
  // the rebuild happens to run at, which a later pop would leave them above.
  addReplacements(*trie, 0);
  trieDirty = false;
}

bool SeparatorList::isEscapedField(const SeparatorField& field) {
  const PrimitiveTypeDefn* type = field.getCustomType();
  return type && type->getUsingSpecialEscapeCharacters();
}

SeparatorList::EscapeMarks SeparatorList::addEscapes(const SeparatorField* field, SeparatorTrieNode& root) {
  const PrimitiveTypeDefn* type = field->getCustomType();
  const int32_t start = type->rawStartEscapeCharacter();
  const int32_t end = type->rawEndEscapeCharacter();
  // Saved one after the other: the end mark may share a node with the start mark just added.
  EscapeMarks marks;
  marks[0] = root.saveSequence(escapeText(start));
  root.addSequence(start, escapeText(start), SeparatorTrieNode::kStartEscape, 0);
  marks[1] = root.saveSequence(escapeText(end));
  root.addSequence(end, escapeText(end), SeparatorTrieNode::kEndEscape, 0);
  return marks;
}

void SeparatorList::removeEscapes(const EscapeMarks& marks, SeparatorTrieNode& root) {
  if (!marks[0].isRestorable() || !marks[1].isRestorable()) {
    // Marks too long to put back: the next read builds the tries afresh.
    if (genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
    trieDirty = true;
    return;
  }
  root.restoreSequence(marks[1]);
  root.restoreSequence(marks[0]);
}

void SeparatorList::readTokenSlowly(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                    bool applyReplacements, bool useGenericTrie, const SeparatorField* field,
                                    bool allowQuotes) {
  if (trieDirty) buildTrie();
  SeparatorTrieNode& root = useGenericTrie && genericTrie ? *genericTrie : *trie;
  // A field type's escape marks stand in the trie for this one read. A mark may share its text
  // with a separator or a replacement (an escape that is also the repetition separator): what the
  // shared node held is put back after the read, else what later reads cut would depend on which
  // escaped values were read before them.
  std::optional<EscapeMarks> marks;
  if (field && isEscapedField(*field)) {
    flushOutOfForce();
    marks = addEscapes(field, root);
  }
  // A comparison in place: peek would build a text for every value read.
  if (allowQuotes && stream.nextIs(kQuote[0])) [[unlikely]] {
    readQuoted(stream, token, maxLength, applyReplacements, root);
  } else {
    stream.readToken(root, token, maxLength, applyReplacements);
  }
  if (marks) removeEscapes(*marks, root);
}

void SeparatorList::readTokenEscaped(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                     bool applyReplacements, bool useGenericTrie, const SeparatorField* field) {
  readTokenSlowly(stream, token, maxLength, applyReplacements, useGenericTrie, field, false);
}

void SeparatorList::readQuoted(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                               SeparatorTrieNode& root) {
  flushOutOfForce();
  ParserToken opening;
  opening.useView = true;
  stream.readChars(1, opening);
  // Inside quotes only the segment separator ends the value; a doubled quote stands for one.
  saveAndPopTo(qxSepSegment);
  // The quote may be a separator's text too: what its nodes held comes back after the read.
  const SeparatorTrieNode::SavedSequence quote = root.saveSequence(kQuote);
  root.addSequence(-1, kQuote, SeparatorTrieNode::kSeparator, 0);
  const SeparatorTrieNode::SavedSequence doubled = root.saveSequence(kDoubledQuote);
  root.addSequence(-1, kDoubledQuote, SeparatorTrieNode::kReplacement, 0, kQuote);
  stream.readToken(root, token, maxLength, applyReplacements);
  root.restoreSequence(doubled);
  root.restoreSequence(quote);
  restorePopped();
  stream.consume(std::u16string(kQuote));
}

}  // namespace vantrelia
