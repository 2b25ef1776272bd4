// The reads that leave the inline path: the first read after a change builds the trie, a field type
// with escape marks brings them into force for one read, and a value in double quotes runs to its
// closing quote.

#include "parsing/SeparatorList.h"

#include "definitions/PrimitiveTypeDefn.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"

namespace vantrelia {

namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";
// The generic trie sees these all at once, at a level above any nesting.
constexpr ESeparatorType kGenericSeparators[] = {qxSepSegment, qxSepRepeat, qxSepField1, qxSepField2, qxSepField3,
                                                 qxSepField4,  qxSepField5, qxSepMessage, qxSepGroup};
constexpr int32_t kGenericLevel = 200;

}  // namespace

void SeparatorList::buildTrie() {
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

void SeparatorList::addEscapes(const SeparatorField* field, SeparatorTrieNode& root, int32_t level) {
  const PrimitiveTypeDefn* type = field->getCustomType();
  const int32_t start = type->rawStartEscapeCharacter();
  const int32_t end = type->rawEndEscapeCharacter();
  root.addSequence(start, escapeText(start), SeparatorTrieNode::kStartEscape, level);
  root.addSequence(end, escapeText(end), SeparatorTrieNode::kEndEscape, level);
}

void SeparatorList::readTokenSlowly(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                    bool applyReplacements, bool useGenericTrie, const SeparatorField* field,
                                    bool allowQuotes) {
  if (trieDirty) buildTrie();
  SeparatorTrieNode& root = useGenericTrie && genericTrie ? *genericTrie : *trie;
  const bool escaped = field && isEscapedField(*field);
  if (escaped) {
    flushOutOfForce();
    addEscapes(field, root, 0);
  }
  // A comparison in place: peek would build a text for every value read.
  if (allowQuotes && stream.nextIs(kQuote[0])) [[unlikely]] {
    readQuoted(stream, token, maxLength, applyReplacements, root);
  } else {
    stream.readToken(root, token, maxLength, applyReplacements);
  }
  if (escaped) addEscapes(field, root, SeparatorTrieNode::kOutOfForce);
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
  root.addSequence(-1, kQuote, SeparatorTrieNode::kSeparator, 0);
  root.addSequence(-1, kDoubledQuote, SeparatorTrieNode::kReplacement, 0, kQuote);
  stream.readToken(root, token, maxLength, applyReplacements);
  root.addSequence(-1, kQuote, SeparatorTrieNode::kSeparator, SeparatorTrieNode::kOutOfForce);
  root.addSequence(-1, kDoubledQuote, SeparatorTrieNode::kReplacement, SeparatorTrieNode::kOutOfForce, kQuote);
  restorePopped();
  stream.consume(std::u16string(kQuote));
}

}  // namespace vantrelia
