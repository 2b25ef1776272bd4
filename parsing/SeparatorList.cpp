#include "parsing/SeparatorList.h"

#include <algorithm>

#include "definitions/FieldPathDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SeparatorDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/TextCompare.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/ParsingMessages.h"

namespace vantrelia {

namespace {

constexpr std::u16string_view kQuote = u"\"";
constexpr std::u16string_view kDoubledQuote = u"\"\"";
constexpr std::u16string_view kLineEnd = u"\r\n";
// The three levels a message starts with.
constexpr ESeparatorType kBaseLevels[] = {qxSepMessage, qxSepGroup, qxSepSegment};
// The generic trie sees these all at once, at a level above any nesting.
constexpr ESeparatorType kGenericSeparators[] = {qxSepSegment, qxSepRepeat, qxSepField1, qxSepField2, qxSepField3,
                                                 qxSepField4,  qxSepField5, qxSepMessage, qxSepGroup};
constexpr int32_t kGenericLevel = 200;
// Findings that a new list doesn't report until the set says otherwise.

bool startsWithAt(std::u16string_view text, size_t at, std::u16string_view what) {
  return !what.empty() && text.substr(at, what.size()) == what;
}

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace

SeparatorList::SeparatorList(const MessageSetDefn& messageSet, bool fixedWidth, const SeparatorList* parent)
    : messageSet(&messageSet),
      trimSegments(messageSet.getTrimSegments()),
      fixedWidth(fixedWidth),
      parent(parent),
      trie(std::make_unique<SeparatorTrieNode>()) {
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    slots[static_cast<size_t>(i)] = SeparatorImpl(messageSet.getSeparator(i));
    savedSlots[static_cast<size_t>(i)] = slots[static_cast<size_t>(i)];
  }
  if (messageSet.getGenericParsing()) genericTrie = std::make_unique<SeparatorTrieNode>();
}

SeparatorList::SeparatorList(const SeparatorList& other)
    : messageSet(other.messageSet),
      variablePending(other.variablePending),
      trimSegments(other.trimSegments),
      fromWire(other.fromWire),
      fixedWidth(other.fixedWidth),
      checkOutputTail(other.checkOutputTail),
      parent(other.parent),
      slots(other.slots),
      savedSlots(other.savedSlots),
      currentSeparator(other.currentSeparator),
      levels(other.levels),
      specialStrings(other.specialStrings),
      levelFixedWidth(other.levelFixedWidth),
      trie(std::make_unique<SeparatorTrieNode>()),
      crlfEquivalent(other.crlfEquivalent),
      errorSettings(other.errorSettings) {
  if (other.genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
  rebuildReplaceOrder();
  rebuildCharacterSets();
}

SeparatorList::~SeparatorList() = default;

inline void SeparatorList::checkSeparatorIndex(int32_t index) {
  if (index < 0 || index >= kSeparatorSlots) throw BadParameter(messages::kInvalidSeparator);
}

const SeparatorDefn& SeparatorList::defnOf(int32_t index) const { return *slots[static_cast<size_t>(index)].defn; }

// ----- reset and recompute

void SeparatorList::takeDefaults(SeparatorImpl& slot) {
  slot.takeDefaultValue();
  slot.replacementValue = translateValue(slot.defn->getReplacementValue().view());
  slot.terminatorReplacement =
      slot.isVariable() ? translateValue(slot.defn->getTerminatorReplacement().view()) : slot.replacementValue;
}

void SeparatorList::takeReplacements() {
  for (SeparatorImpl& slot : slots) {
    slot.replacementValue = translateValue(slot.defn->getReplacementValue().view());
    slot.terminatorReplacement =
        slot.isVariable() ? translateValue(slot.defn->getTerminatorReplacement().view()) : slot.replacementValue;
  }
}

void SeparatorList::reset(bool fromWireArg, bool initSeparators, bool initErrorSettings) {
  // translateValue looks at fromWire, so it takes its new value first.
  fromWire = fromWireArg;
  if (initSeparators) {
    if (!messageSet->getInitializeSeparatorsFromParent() || !parent) {
      for (SeparatorImpl& slot : slots) {
        const bool preset = slot.flags() & SeparatorDefn::kPreset;
        slot.known = preset;
        // A value read earlier survives a reset until something replaces it; a host's value of a
        // preset separator survives for good.
        if (preset ? slot.useDefault : slot.value.empty()) slot.takeDefaultValue();
      }
      takeReplacements();
    } else {
      // The texts come from the parent; the definitions stay this set's own.
      for (size_t i = 0; i < slots.size(); ++i) {
        const SeparatorDefn* own = slots[i].defn;
        slots[i] = parent->slots[i];
        slots[i].defn = own;
        slots[i].known = !slots[i].value.empty();
      }
    }
  }
  rebuildReplaceOrder();

  const MessageWarehouseDefn* warehouse = messageSet->getWarehouse();
  crlfEquivalent = warehouse && warehouse->getSettings().replaceCRLFWithSegmentSeparator ? qxSepSegment : -1;
  const SeparatorImpl& crlf = slots[qxSepCrlf];
  if (crlf.known && !crlf.value.empty()) {
    for (int32_t i = 0; i < qxSepCrlf; ++i) {
      if (slots[static_cast<size_t>(i)].value == crlf.value) {
        crlfEquivalent = i;
        break;
      }
    }
  }

  if (initErrorSettings) {
    errorSettings.reload(*messageSet, parent ? &parent->errorSettings : nullptr);
  }

  levels.assign(std::begin(kBaseLevels), std::end(kBaseLevels));
  trie->setLevel(static_cast<int32_t>(levels.size()));
  currentSeparator = qxSepSegment;
  specialStrings.clear();
  levelFixedWidth.assign(levels.size(), fixedWidth ? 1 : 0);
  stackSaver.clear();

  checkOutputTail = false;
  output.clear();
  pending.clear();
  pendingLast = -1;
  trieDirty = true;
  if (genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
  updateActive();
}

void SeparatorList::updateActive() {
  variablePending = false;
  for (SeparatorImpl& slot : slots) {
    slot.active = !slot.value.empty() && (slot.known || !fromWire);
    if (!slot.known && !(slot.flags() & SeparatorDefn::kFixed)) variablePending = true;
  }
  if (!variablePending) rebuildReplaceOrder();
  rebuildCharacterSets();
}

std::u16string_view SeparatorList::entryText(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminator : slot.value;
}

std::u16string_view SeparatorList::entryReplacement(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminatorReplacement : slot.replacementValue;
}

void SeparatorList::rebuildReplaceOrder() {
  replaceOrder.clear();
  for (int32_t i = 0; i < qxSepCrlf; ++i) {
    replaceOrder.push_back({i, false});
    if (slots[static_cast<size_t>(i)].isVariable()) replaceOrder.push_back({i, true});
  }
  // Longest first, so that a separator that begins another is never taken for it.
  std::stable_sort(replaceOrder.begin(), replaceOrder.end(), [this](const ReplaceEntry& a, const ReplaceEntry& b) {
    return entryText(a).size() > entryText(b).size();
  });
}

void SeparatorList::rebuildCharacterSets() {
  mustQuoteCharacters.clear();
  mustEncodeCharacters.clear();
  for (const ReplaceEntry& entry : replaceOrder) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
    const std::u16string_view text = entryText(entry);
    if (!slot.active || text.empty()) continue;
    if (!slot.replacementValue.empty()) mustEncodeCharacters += text.front();
    if (entry.index != qxSepNull && entry.index != qxSepDecimal && entry.index != qxSepFiller) {
      mustQuoteCharacters += text.front();
    }
  }
  mustQuoteCharacters += kQuote;
}

// ----- queries and changes

std::u16string_view SeparatorList::getSeparatorValue(int32_t index) const {
  if (index == kCurrent) index = currentSeparator;
  checkSeparatorIndex(index);
  if (index == qxSepNone) return {};
  if (index == qxSepString) return specialStrings.empty() ? std::u16string_view() : specialStrings.back();
  return slots[static_cast<size_t>(index)].value;
}

bool SeparatorList::isSeparatorActive(int32_t index) const {
  if (index == kCurrent) index = currentSeparator;
  checkSeparatorIndex(index);
  if (std::find(levels.begin(), levels.end(), index) == levels.end()) return false;
  if (index == qxSepNone) return false;
  if (index == qxSepString) return !specialStrings.empty() && !specialStrings.back().empty();
  return slots[static_cast<size_t>(index)].active;
}

const FieldPathDefn& SeparatorList::getFieldLocation(int32_t index) const {
  checkSeparatorIndex(index);
  return defnOf(index).getFieldPath();
}

int32_t SeparatorList::getPosition(int32_t index) const {
  checkSeparatorIndex(index);
  return defnOf(index).getPosition();
}

const SeparatorImpl& SeparatorList::getSlot(int32_t index) const {
  checkSeparatorIndex(index);
  return slots[static_cast<size_t>(index)];
}

EVErrType SeparatorList::getValidationErrorSetting(int32_t errorNumber) const { return errorSettings.get(errorNumber); }

void SeparatorList::setValidationErrorSetting(int32_t errorNumber, EVErrType setting) {
  errorSettings.set(errorNumber, setting);
}

void SeparatorList::setSeparatorValue(int32_t index, std::u16string_view text) {
  checkSeparatorIndex(index);
  SeparatorImpl& slot = slots[static_cast<size_t>(index)];
  slot.setValue(std::u16string(text));
  slot.useDefault = false;
  trieDirty = true;
  updateActive();
}

void SeparatorList::setKnown(int32_t index, bool known) {
  checkSeparatorIndex(index);
  slots[static_cast<size_t>(index)].known = known;
  updateActive();
}

// ----- the stack of levels

[[gnu::always_inline]] inline std::u16string_view SeparatorList::levelText(ESeparatorType index) const {
  if (index == qxSepNone) return {};
  if (index == qxSepString) return specialStrings.empty() ? std::u16string_view() : specialStrings.back();
  const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
  return slot.active ? std::u16string_view(slot.value) : std::u16string_view();
}

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
  if (index == qxSepString) specialStrings.emplace_back(specialString);
  // Fixed width, once on, stays on for all that is nested in it.
  levelFixedWidth.push_back(levelFixed || (!levelFixedWidth.empty() && levelFixedWidth.back()) ? 1 : 0);
  trie->setLevel(trie->getLevel() + 1);
  const std::u16string_view text = levelText(index);
  // The separator just popped from this very level comes back: its sequence still stands at this
  // level, so neither the pop nor the push has to touch the trie.
  if (trieDirty) poppedOutOfForce.clear();  // the next read builds a new trie anyway
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
  // Once the root's level is below it, the sequence is out of force for reads already; it is taken
  // out for every level only when a push could raise the level to it again (flushOutOfForce).
  const std::u16string_view text = levelText(index);
  if (index == qxSepString) {
    // A pushed string goes with its level, so it is taken out of force at once. The root's level
    // is below it from here on either way, so reads see no difference.
    if (!trieDirty) addLevelSequences(index, text, SeparatorTrieNode::kOutOfForce);
  } else if (!text.empty()) {
    poppedOutOfForce.push_back({index, trie->getLevel(), text});
  }
  trie->setLevel(trie->getLevel() - 1);
  if (index == qxSepString) specialStrings.pop_back();
  levels.pop_back();
  if (!levelFixedWidth.empty()) levelFixedWidth.pop_back();
  currentSeparator = levels.empty() ? qxSepSegment : levels.back();
  return static_cast<ESeparatorType>(currentSeparator);
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
  levels = savedLevels;
  currentSeparator = levels.empty() ? qxSepSegment : levels.back();
  trieDirty = true;
}

void SeparatorList::saveAndPopTo(ESeparatorType index) {
  std::vector<PoppedLevel>& popped = stackSaver.emplace_back();
  while (!levels.empty() && levels.back() != index) {
    const ESeparatorType top = levels.back();
    PoppedLevel level{top, {}, !levelFixedWidth.empty() && levelFixedWidth.back() != 0};
    if (top == qxSepString && !specialStrings.empty()) level.specialString = specialStrings.back();
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

// ----- reading

void SeparatorList::buildTrie() {
  poppedOutOfForce.clear();
  trie = std::make_unique<SeparatorTrieNode>();
  trie->setLevel(static_cast<int32_t>(levels.size()));
  // A pushed string keeps its place on the stack too: the k-th qxSepString level owns the k-th
  // entry of specialStrings.
  size_t stringLevel = 0;
  for (size_t i = 0; i < levels.size(); ++i) {
    const ESeparatorType index = levels[i];
    const int32_t level = static_cast<int32_t>(i + 1);
    if (index == qxSepNone) continue;
    if (index == qxSepString) {
      if (stringLevel < specialStrings.size()) addLevelSequences(index, specialStrings[stringLevel], level);
      ++stringLevel;
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
        root.addSequence(i, slot.terminatorReplacement, SeparatorTrieNode::kReplacement, level, slot.terminator);
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

void SeparatorList::addEscapes(const SeparatorField* field, SeparatorTrieNode& root, int32_t level) {
  const PrimitiveTypeDefn* type = field->getCustomType();
  const int32_t start = type->rawStartEscapeCharacter();
  const int32_t end = type->rawEndEscapeCharacter();
  if (start >= 0 && start < kSeparatorSlots) {
    root.addSequence(start, slots[static_cast<size_t>(start)].value, SeparatorTrieNode::kStartEscape, level);
  }
  if (end >= 0 && end < kSeparatorSlots) {
    root.addSequence(end, slots[static_cast<size_t>(end)].value, SeparatorTrieNode::kEndEscape, level);
  }
}

void SeparatorList::readTokenSlowly(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                    bool applyReplacements, bool useGenericTrie, const SeparatorField* field) {
  if (trieDirty) buildTrie();
  SeparatorTrieNode& root = useGenericTrie && genericTrie ? *genericTrie : *trie;
  const bool escaped = field && isEscapedField(*field);
  if (escaped) {
    flushOutOfForce();
    addEscapes(field, root, 0);
  }
  // A comparison in place: peek would build a text for every value read.
  if (stream.nextIs(kQuote[0])) [[unlikely]] {
    readQuoted(stream, token, maxLength, applyReplacements, root);
  } else {
    stream.readToken(root, token, maxLength, applyReplacements);
  }
  if (escaped) addEscapes(field, root, SeparatorTrieNode::kOutOfForce);
}

bool SeparatorList::isEscapedField(const SeparatorField& field) {
  const PrimitiveTypeDefn* type = field.getCustomType();
  return type && type->getUsingSpecialEscapeCharacters();
}

void SeparatorList::readQuoted(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                               SeparatorTrieNode& root) {
  flushOutOfForce();
  ParserToken opening;
  opening.useView = true;
  stream.readChars(1, opening);
  // Inside quotes only the segment separator ends the value; a doubled quote stands for one.
  saveAndPopTo(qxSepSegment);
  root.addSequence(-1, kQuote, SeparatorTrieNode::kSeparator, 0);
  root.addSequence(-1, kDoubledQuote, SeparatorTrieNode::kReplacement, 0, kQuote);
  stream.readToken(root, token, maxLength, applyReplacements);
  root.addSequence(-1, kQuote, SeparatorTrieNode::kSeparator, SeparatorTrieNode::kOutOfForce);
  root.addSequence(-1, kDoubledQuote, SeparatorTrieNode::kReplacement, SeparatorTrieNode::kOutOfForce, kQuote);
  restorePopped();
  stream.consume(std::u16string(kQuote));
}

void SeparatorList::readTokenEscaped(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                     bool applyReplacements, bool useGenericTrie, const SeparatorField* field) {
  if (trieDirty) buildTrie();
  SeparatorTrieNode& root = useGenericTrie && genericTrie ? *genericTrie : *trie;
  const bool escaped = field && isEscapedField(*field);
  if (escaped) {
    flushOutOfForce();
    addEscapes(field, root, 0);
  }
  stream.readToken(root, token, maxLength, applyReplacements);
  if (escaped) addEscapes(field, root, SeparatorTrieNode::kOutOfForce);
}

// ----- separators carried by header fields

std::string SeparatorList::pathText(const FieldPathDefn& path) {
  std::string text = path.getName().str();
  for (const int32_t index : path.getIndexes()) text += "/" + std::to_string(index);
  return text;
}

bool SeparatorList::pathMatches(const FieldPathDefn& separatorPath, const FieldPathDefn& elementPath) {
  const std::string_view wanted = separatorPath.getName().view();
  if (wanted.empty()) return false;
  if (separatorPath.isNumeric()) {
    return elementPath.isNumeric() && equalIgnoringCase(wanted, elementPath.getName().view()) &&
           separatorPath.getIndexes() == elementPath.getIndexes();
  }
  const std::string element = pathText(elementPath);
  if (equalIgnoringCase(wanted, element)) return true;
  // The end of a longer element path, starting behind a "/".
  return element.size() > wanted.size() && element[element.size() - wanted.size() - 1] == '/' &&
         equalIgnoringCase(std::string_view(element).substr(element.size() - wanted.size()), wanted);
}

std::vector<int32_t> SeparatorList::slotsOfField(const FieldPathDefn& fieldPath, bool endPositions, bool exactPath) const {
  std::vector<int32_t> found;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorDefn& defn = defnOf(i);
    const FieldPathDefn& path = defn.getFieldPath();
    if ((defn.getPosition() < 0) != endPositions) continue;
    const bool matches = exactPath ? !path.isNumeric() && !fieldPath.isNumeric() && path.getName().length() != 0 &&
                                         equalIgnoringCase(path.getName().view(), fieldPath.getName().view())
                                   : pathMatches(path, fieldPath);
    if (matches) found.push_back(i);
  }
  std::stable_sort(found.begin(), found.end(), [this](int32_t a, int32_t b) {
    return std::abs(defnOf(a).getPosition()) < std::abs(defnOf(b).getPosition());
  });
  return found;
}

void SeparatorList::readSlotsFromStream(const std::vector<int32_t>& slotIndexes, ParserStream& stream) {
  if (stream.atEnd()) return;
  bool changed = false;
  std::optional<int32_t> lastPosition;
  for (const int32_t i : slotIndexes) {
    const SeparatorDefn& defn = defnOf(i);
    if (lastPosition == defn.getPosition()) continue;  // each position once
    lastPosition = defn.getPosition();
    const int32_t length = static_cast<int32_t>(defn.getValue().length());
    if (length == 0) continue;
    ParserToken token;
    stream.readChars(length, token);
    SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    // A value cut short by the end of the text leaves the slot to its default.
    if (slot.known || token.text.size() != static_cast<size_t>(length)) continue;
    slot.known = true;
    slot.setValue(token.text);
    changed = true;
  }
  if (changed) {
    takeReplacements();
    trieDirty = true;
    updateActive();
  }
}

void SeparatorList::readFromStream(const FieldPathDefn& fieldPath, ParserStream& stream) {
  readSlotsFromStream(slotsOfField(fieldPath, false, true), stream);
}

void SeparatorList::readFromStreamEnd(const FieldPathDefn& fieldPath, ParserStream& stream) {
  readSlotsFromStream(slotsOfField(fieldPath, true, true), stream);
}

std::u16string_view SeparatorList::fillerText() const {
  const std::u16string& filler = slots[qxSepFiller].value;
  return filler.empty() ? std::u16string_view(u" ") : std::u16string_view(filler).substr(0, 1);
}

std::u16string SeparatorList::takeFromField(const FieldPathDefn& fieldPath, std::u16string_view text) {
  const std::vector<int32_t> ofField = slotsOfField(fieldPath, false, false);
  bool taken = false;
  for (const int32_t i : ofField) {
    SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    if (slot.known) continue;
    const SeparatorDefn& defn = defnOf(i);
    const size_t position = static_cast<size_t>(defn.getPosition());
    if (defn.getValue().length() != 0 && position < text.size()) {
      slot.setValue(std::u16string(text.substr(position, defn.getValue().length())));
    } else if (defn.getValue().length() == 0 || slot.value.empty()) {
      slot.takeDefaultValue();
    }
    slot.known = true;
    taken = true;
  }
  if (taken) takeReplacements();

  // The text comes back with every separator of the field at its place.
  std::u16string completed(text);
  for (const int32_t i : ofField) {
    const SeparatorDefn& defn = defnOf(i);
    const size_t position = static_cast<size_t>(defn.getPosition());
    if (defn.getValue().length() != 0 && position < completed.size()) continue;
    if (completed.size() < position) completed.append(position - completed.size(), fillerText().front());
    completed.replace(position, defn.getValue().length(), defn.getValue().view());
  }
  trieDirty = true;
  updateActive();
  return completed;
}

std::u16string SeparatorList::collectSlots(const FieldPathDefn& fieldPath, bool endPositions) const {
  std::u16string text;
  for (const int32_t i : slotsOfField(fieldPath, endPositions, false)) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    text += slot.known ? std::u16string_view(slot.value) : slot.defn->getValue().view();
  }
  return text;
}

std::u16string SeparatorList::collectForField(const FieldPathDefn& fieldPath) const {
  return collectSlots(fieldPath, false);
}

std::u16string SeparatorList::collectForFieldEnd(const FieldPathDefn& fieldPath) const {
  return collectSlots(fieldPath, true);
}

void SeparatorList::markKnownForPath(std::string_view path) {
  if (!variablePending) return;
  for (SeparatorImpl& slot : slots) {
    const FieldPathDefn& fieldPath = slot.defn->getFieldPath();
    if (!slot.known && fieldPath.getName().length() != 0 && startsWithIgnoringCase(pathText(fieldPath), path)) {
      slot.known = true;
    }
  }
  updateActive();
}

void SeparatorList::applyDefaultForPath(std::string_view path) {
  if (!variablePending) return;
  for (SeparatorImpl& slot : slots) {
    const FieldPathDefn& fieldPath = slot.defn->getFieldPath();
    if (!slot.known && fieldPath.getName().length() != 0 && startsWithIgnoringCase(pathText(fieldPath), path)) {
      takeDefaults(slot);
      slot.known = true;
      trieDirty = true;
    }
  }
  updateActive();
}

void SeparatorList::markKnownForChildren(std::string_view path, int32_t count,
                                         const std::function<int32_t(std::string_view)>& childIndex) {
  if (!variablePending) return;
  for (SeparatorImpl& slot : slots) {
    const FieldPathDefn& fieldPath = slot.defn->getFieldPath();
    if (slot.known || fieldPath.getName().length() == 0) continue;
    bool below = false;
    if (fieldPath.isNumeric()) {
      // A numeric path names its segment and then 1-based field numbers.
      below = equalIgnoringCase(fieldPath.getName().view(), path) && !fieldPath.getIndexes().empty() &&
              fieldPath.getIndexes().front() >= 1 && fieldPath.getIndexes().front() <= count;
    } else {
      const std::string text = pathText(fieldPath);
      if (text.size() > path.size() + 1 && startsWithIgnoringCase(text, path) && text[path.size()] == '/') {
        const std::string_view rest = std::string_view(text).substr(path.size() + 1);
        const int32_t child = childIndex ? childIndex(rest.substr(0, rest.find('/'))) : -1;
        below = child >= 0 && child < count;
      }
    }
    if (below) slot.known = true;
  }
  updateActive();
}

void SeparatorList::restoreForItem(const MessageDefn& messageDefn, std::string_view name) {
  savedSlots = slots;
  for (SeparatorImpl& slot : slots) {
    if (slot.flags() & SeparatorDefn::kFromField) slot.known = false;
  }
  for (const auto& item : messageDefn.getItems()) {
    const std::string_view itemName = item->getName().view();
    if (equalIgnoringCase(itemName, name)) break;
    for (int32_t i = 0; i < kSeparatorSlots; ++i) {
      SeparatorImpl& slot = slots[static_cast<size_t>(i)];
      const FieldPathDefn& fieldPath = slot.defn->getFieldPath();
      if (fieldPath.getName().length() == 0 || !startsWithIgnoringCase(pathText(fieldPath), itemName)) continue;
      slot = savedSlots[static_cast<size_t>(i)];
      if (!slot.known) {
        takeDefaults(slot);
        slot.known = true;
        trieDirty = true;
      }
    }
  }
  updateActive();
}

// ----- writing

int32_t SeparatorList::rank(int32_t index) {
  switch (index) {
    case qxSepMessage:
    case qxSepCrlf: return 0;
    case qxSepGroup: return 1;
    case qxSepSegment: return 2;
    case qxSepField1: return 3;
    case qxSepRepeat: return 4;
    case qxSepField2: return 5;
    case qxSepField3: return 6;
    case qxSepField4: return 7;
    case qxSepField5: return 8;
    default: return 99;
  }
}

void SeparatorList::writeSeparator(int32_t position, int32_t index) {
  if (index == kCurrent) index = currentSeparator;
  checkSeparatorIndex(index);
  if (index == qxSepNone) return;
  const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
  if (index == qxSepString ? specialStrings.empty() || specialStrings.back().empty() : !slot.active) return;
  const uint32_t flags = slot.flags();
  if (!(flags & static_cast<uint32_t>(position))) return;

  std::u16string_view text = index == qxSepString        ? std::u16string_view(specialStrings.back())
                             : position == kWriteInitiator  ? std::u16string_view(slot.initiator)
                             : position == kWriteTerminator ? std::u16string_view(slot.terminator)
                                                            : std::u16string_view(slot.value);
  if (!text.empty()) {
    const int32_t newRank = rank(index);
    // Pending separators of lower levels are trailing empties once a higher level closes.
    while (!pending.empty()) {
      const int32_t last = pending.back().first;
      if (last == qxSepField1 && index == qxSepSegment && !trimSegments) break;
      if ((defnOf(last).getFlags() & SeparatorDefn::kTerminator) || newRank >= rank(last)) break;
      pending.pop_back();
    }
    pendingLast = pending.empty() ? -1 : pending.back().first;
    const bool sameOuterLevel = !pending.empty() && newRank <= 2 && newRank == rank(pending.back().first);
    const bool alreadyOut = checkOutputTail && output.size() >= text.size() &&
                            std::u16string_view(output).substr(output.size() - text.size()) == text;
    if (!sameOuterLevel && !alreadyOut) {
      pending.emplace_back(index, std::u16string(text));
      pendingLast = index;
    }
  }
  // A terminator goes out at once, so that the last item of a text keeps it.
  if ((position & kWriteTerminator) && (flags & SeparatorDefn::kTerminator)) flushPending();
  checkOutputTail = false;
}

void SeparatorList::flushPending() {
  for (const auto& [index, text] : pending) output += text;
  pending.clear();
  pendingLast = -1;
}

void SeparatorList::writeData(std::u16string_view text) {
  flushPending();
  output += text;
}

void SeparatorList::clearOutput() {
  output.clear();
  pending.clear();
  pendingLast = -1;
}

// ----- values

std::u16string SeparatorList::translateValue(std::u16string_view text) const {
  std::u16string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    bool replaced = false;
    for (const SeparatorImpl& slot : slots) {
      if (!(slot.known || (!fromWire && !slot.value.empty()))) continue;
      const std::u16string_view defaultText = slot.defn->getValue().view();
      if (startsWithAt(text, at, defaultText)) {
        result += slot.value;
        at += defaultText.size();
        replaced = true;
        break;
      }
    }
    if (!replaced) result += text[at++];
  }
  return result;
}

std::u16string SeparatorList::encodeValue(std::u16string_view text, int32_t fieldType) const {
  const bool quotedType = fieldType == kQuotedTextType;
  const std::u16string_view watched = quotedType ? mustQuoteCharacters : mustEncodeCharacters;
  if (text.find_first_of(watched) == std::u16string_view::npos) return std::u16string(text);

  std::u16string result;
  result.reserve(text.size() + 8);
  bool needsQuotes = false;
  for (size_t at = 0; at < text.size();) {
    if (quotedType && text[at] == kQuote.front()) {
      result += kDoubledQuote;
      needsQuotes = true;
      ++at;
      continue;
    }
    bool taken = false;
    for (const ReplaceEntry& entry : replaceOrder) {
      const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
      if (!slot.active) continue;
      const std::u16string_view separator = entryText(entry);
      if (!startsWithAt(text, at, separator)) continue;
      if (!slot.replacementValue.empty()) {
        result += entryReplacement(entry);
        at += separator.size();
        needsQuotes = needsQuotes || quotedType;
        taken = true;
        break;
      }
      if (quotedType && entry.index != qxSepNull && entry.index != qxSepDecimal && entry.index != qxSepFiller) {
        needsQuotes = true;
      }
    }
    if (!taken) result += text[at++];
  }
  if (needsQuotes) return std::u16string(kQuote) + result + std::u16string(kQuote);
  return result;
}

std::u16string SeparatorList::decodeValue(std::u16string_view text, int32_t fieldType) const {
  std::u16string result;
  result.reserve(text.size());
  size_t at = 0;
  const bool quoted = fieldType == kQuotedTextType && !text.empty() && text.front() == kQuote.front();
  if (quoted) at = 1;
  while (at < text.size()) {
    if (quoted && text[at] == kQuote.front()) {
      if (at + 1 == text.size()) break;
      if (text[at + 1] == kQuote.front()) {
        result += kQuote;
        at += 2;
        continue;
      }
    }
    bool replaced = false;
    for (const SeparatorImpl& slot : slots) {
      if (slot.active && startsWithAt(text, at, slot.replacementValue)) {
        result += slot.value;
        at += slot.replacementValue.size();
        replaced = true;
        break;
      }
    }
    if (!replaced) result += text[at++];
  }
  return result;
}

std::optional<int32_t> SeparatorList::findInvalidCharacters(const SeparatorField& field, std::u16string_view wireValue,
                                                            bool warningsWanted) const {
  const EVErrType setting = getValidationErrorSetting(kInvalidCharactersError);
  if (setting == qxVESIgnore || (setting == qxVESWarning && !warningsWanted)) return std::nullopt;

  const PrimitiveTypeDefn* type = field.getCustomType();
  const bool escaped = type && type->getUsingSpecialEscapeCharacters();
  const bool quotedType = field.getFieldType() == kQuotedTextType;
  std::vector<int32_t> checked;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    if (i == qxSepDecimal || i == qxSepFiller || (escaped && i == qxSepNull)) continue;
    if (quotedType && i != qxSepSegment && i != qxSepGroup && i != qxSepMessage) continue;
    if (slot.value.empty() || (fromWire && !slot.known)) continue;
    if (field.isSeparatorAllowed(i) || !slot.replacementValue.empty()) continue;
    if (pathMatches(slot.defn->getFieldPath(), field.getFieldPath())) continue;
    checked.push_back(i);
  }

  std::u16string_view startEscape, endEscape;
  if (escaped) {
    const int32_t start = type->rawStartEscapeCharacter();
    const int32_t end = type->rawEndEscapeCharacter();
    if (start >= 0 && start < kSeparatorSlots) startEscape = slots[static_cast<size_t>(start)].value;
    if (end >= 0 && end < kSeparatorSlots) endEscape = slots[static_cast<size_t>(end)].value;
  }
  for (size_t at = 0; at < wireValue.size();) {
    if (escaped && startsWithAt(wireValue, at, startEscape)) {
      const size_t close = endEscape.empty() ? std::u16string_view::npos
                                             : wireValue.find(endEscape, at + startEscape.size());
      if (close == std::u16string_view::npos) return -1;
      at = close + endEscape.size();
      continue;
    }
    for (const int32_t i : checked) {
      if (startsWithAt(wireValue, at, slots[static_cast<size_t>(i)].value)) return i;
    }
    ++at;
  }
  return std::nullopt;
}

}  // namespace vantrelia
