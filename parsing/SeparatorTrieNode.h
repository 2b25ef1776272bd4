#pragma once
// One node of the separator trie: the character tree over every sequence that can end a token
// (separators), stand for other text (replacements) or open and close an escape. Each sequence
// carries a level; a read counts only the sequences whose level is at most the root's level, so
// entering and leaving a nested structure changes numbers in the tree and rebuilds nothing.
//
// A root also keeps the characters that can start a sequence, laid out for the scan over plain
// text between separators: eight characters at a time against up to eight first characters, or
// one table look-up per character when there are more.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "foundation/NodePool.h"

namespace vantrelia {

class SeparatorTrieNode : public PoolAllocated {
 public:
  // Bits of getFlags(); the kind argument of addSequence is one of 1, 2, 0x10000, 0x20000.
  static constexpr uint32_t kSeparator = 0x1;    // a separator ends here
  static constexpr uint32_t kReplacement = 0x2;  // a replacement sequence ends here
  static constexpr uint32_t kInner = 0x4;        // nothing ends here (a new node)
  static constexpr uint32_t kStartEscape = 0x10000;
  static constexpr uint32_t kEndEscape = 0x20000;
  static constexpr uint32_t kEscapes = kStartEscape | kEndEscape;
  // Adding a sequence again at this level takes it out of force for every level in use.
  static constexpr int32_t kOutOfForce = 999;
  // At most this many first characters count; a root with more children in force ignores the
  // ones behind, in the order of the children.
  static constexpr int32_t kFirstCharactersLimit = 20;

  // A root, with level 0.
  SeparatorTrieNode();
  ~SeparatorTrieNode();
  SeparatorTrieNode(const SeparatorTrieNode&) = delete;
  SeparatorTrieNode& operator=(const SeparatorTrieNode&) = delete;
  SeparatorTrieNode(SeparatorTrieNode&&) noexcept = default;
  SeparatorTrieNode& operator=(SeparatorTrieNode&&) noexcept = default;

  // Adds text, up to its first zero, below this node and returns the node that ends it (to mark
  // the line-end pair with setIsCrlf), or null for an empty text, which adds nothing. kind says
  // what ends there; replacement is kept with kind kReplacement only.
  SeparatorTrieNode* addSequence(int32_t separatorIndex, std::u16string_view text, uint32_t kind,
                                 int32_t level,
                                 std::optional<std::u16string_view> replacement = std::nullopt);

  // A sequence added for one read only (escape marks, quotes) may share nodes with sequences the
  // trie holds for longer: with a separator of the same text, say. What its nodes held before is
  // kept, and put back after the read, so that the trie reads afterwards exactly as it did before:
  // nodes the sequence made go again, and a shared node gets back what ended there. Saves and
  // restores nest; sequences longer than kSavedDepth can't be put back (isRestorable).
  static constexpr size_t kSavedDepth = 4;
  struct SavedSequence {
    std::u16string_view text;  // up to its first zero; must stand until the restore
    size_t existing = 0;       // how many nodes of its path stood before
    std::array<int32_t, kSavedDepth> minLevels{};
    uint32_t flags = kInner;  // of the last node, when it stood
    int32_t level = 0;
    int8_t separatorIndex = -1;
    std::optional<std::u16string> replacement;
    bool isRestorable() const { return text.size() <= kSavedDepth; }
  };
  SavedSequence saveSequence(std::u16string_view text) const;
  void restoreSequence(const SavedSequence& saved);

  // The child with that character if its sequence is in force at level, or if other sequences
  // pass through it; null otherwise.
  const SeparatorTrieNode* findChild(char16_t c, int32_t level) const {
    const SeparatorTrieNode* child = childWithCharacter(c);
    return child && (child->level <= level || child->hasChildren) ? child : nullptr;
  }

  // On a root: the first characters of the sequences ever added at or below the root's level, in
  // the order of the children, at most kFirstCharactersLimit of them. A sequence taken out of
  // force again may still be listed; it then costs a failed walk and nothing else.
  std::u16string_view getFirstCharacters();
  // On a root: whether c is among the first characters, without building the array.
  bool isFirstCharacter(char16_t c) {
    if (firstDirty) rebuildFirstCharacters();
    return firstChild(c) != nullptr;
  }

  // What a scan of the text found: the first position whose character is a first character, and
  // the root's child for it; end and null when there is none.
  struct Candidate {
    const char16_t* position;
    const SeparatorTrieNode* child;
  };
  // On a root: the scan over [from, end) that runs over all plain text. Inline, because it is the
  // parser's innermost loop.
  [[gnu::always_inline]] Candidate findCandidate(const char16_t* from, const char16_t* end);

  // On a root: every sequence that ends in force at the root's level, each as its text, a zero,
  // then what ends there (kind, separator index, replacement), sorted. Two roots that give the
  // same list read every text alike at that level; checks compare them.
  std::vector<std::u16string> sequencesInForce() const;

  char16_t getCharacter() const { return character; }
  uint32_t getFlags() const { return flags; }
  int32_t getLevel() const { return level; }
  // On a root: the level in force for a read.
  void setLevel(int32_t value) { level = value; }
  int32_t getMinLevel() const { return minLevel; }
  bool getHasChildren() const { return hasChildren; }
  int32_t getChildCount() const { return static_cast<int32_t>(children.size()); }
  const SeparatorTrieNode& getChild(int32_t index) const {
    return *children[static_cast<size_t>(index)];
  }
  const std::optional<std::u16string>& getReplacement() const { return replacement; }
  bool getIsCrlf() const { return isCrlf; }
  void setIsCrlf(bool value) { isCrlf = value; }
  int32_t getSeparatorIndex() const { return separatorIndex; }

 private:
  static constexpr uint8_t kNoChild = 0xFF;
  static constexpr uint8_t kSearchChildren = 0xFE;  // a shared low byte, or a child beyond 253
  static constexpr size_t kVectorWidth = 8;

  // The root's index of its children by character. It holds every child whatever its level, so a
  // change of level or a sequence taken out of force leaves it as it is; only a new child of the
  // root, or a lower minLevel of one, makes it stale. Whether a child counts at the level of the
  // moment is asked on each hit.
  struct FirstCharacters : PoolAllocated {
    FirstCharacters() { slotByLowByte.fill(kNoChild); }
    struct Entry {
      const SeparatorTrieNode* node;
      int32_t minLevel;
      char16_t character;
    };
    // The entry of each character by its low byte, so that a character costs one look-up.
    std::array<uint8_t, 256> slotByLowByte;
    std::vector<Entry, NodePoolAllocator<Entry>> entries;  // one per child, in the order of the children
#if defined(__SSE2__)
    // With at most eight children: each child's character in all lanes, the last one repeated.
    __m128i lanes[kVectorWidth];
    bool vectored = false;
#endif
    // What getFirstCharacters hands out.
    std::array<char16_t, kFirstCharactersLimit> characters{};
  };

  SeparatorTrieNode(char16_t character, int32_t level);
  static std::unique_ptr<SeparatorTrieNode> makeChild(char16_t character, int32_t level);
  // A root with an index up to date looks the character up; other nodes have few children.
  const SeparatorTrieNode* childWithCharacter(char16_t c) const {
    if (first && !firstDirty) {
      const uint8_t slot = first->slotByLowByte[static_cast<uint8_t>(c)];
      if (slot == kNoChild) return nullptr;
      if (slot != kSearchChildren) {
        const FirstCharacters::Entry& entry = first->entries[slot];
        return entry.character == c ? entry.node : nullptr;
      }
    }
    for (const auto& child : children) {
      if (child->character == c) return child.get();
    }
    return nullptr;
  }
  void rebuildFirstCharacters();
  const char16_t* nextIndexedCharacter(const char16_t* from, const char16_t* end) const;
  // The root's child for c if c is a first character at the root's level.
  const SeparatorTrieNode* firstChild(char16_t c) const;
  // With more children than the limit: whether child is one of the first ones that count.
  bool isAmongFirstInForce(const SeparatorTrieNode* child) const;

  char16_t character = 0;
  uint32_t flags = kInner;
  NodeVector<SeparatorTrieNode> children;  // in order of insertion
  int32_t level = 0;
  int32_t minLevel = 0;  // the lowest level any sequence through here was added with; only drops
  bool hasChildren = false;
  std::optional<std::u16string> replacement;
  bool isCrlf = false;  // ends the carriage return and line feed pair of the qxSepCrlf separator
  int8_t separatorIndex = -1;
  bool firstDirty = true;  // a child was added, or its minLevel lowered, since the index was built
  std::unique_ptr<FirstCharacters> first;  // made when first needed, on a root only
};

inline const SeparatorTrieNode* SeparatorTrieNode::firstChild(char16_t c) const {
  if (!first) return nullptr;
  const uint8_t slot = first->slotByLowByte[static_cast<uint8_t>(c)];
  if (slot == kNoChild) return nullptr;
  const SeparatorTrieNode* child;
  if (slot == kSearchChildren) {
    child = childWithCharacter(c);
    if (!child || child->minLevel > level) return nullptr;
  } else {
    const FirstCharacters::Entry& entry = first->entries[slot];
    if (entry.character != c || entry.minLevel > level) return nullptr;
    child = entry.node;
  }
  return children.size() <= static_cast<size_t>(kFirstCharactersLimit) || isAmongFirstInForce(child)
             ? child
             : nullptr;
}

inline const char16_t* SeparatorTrieNode::nextIndexedCharacter(const char16_t* from,
                                                               const char16_t* end) const {
#if defined(__SSE2__)
  if (first->vectored && end - from >= static_cast<ptrdiff_t>(kVectorWidth)) {
    const __m128i* lanes = first->lanes;
    const __m128i c0 = lanes[0], c1 = lanes[1], c2 = lanes[2], c3 = lanes[3];
    const __m128i c4 = lanes[4], c5 = lanes[5], c6 = lanes[6], c7 = lanes[7];
    do {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
      const __m128i hits = _mm_or_si128(
          _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(block, c0), _mm_cmpeq_epi16(block, c1)),
                       _mm_or_si128(_mm_cmpeq_epi16(block, c2), _mm_cmpeq_epi16(block, c3))),
          _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(block, c4), _mm_cmpeq_epi16(block, c5)),
                       _mm_or_si128(_mm_cmpeq_epi16(block, c6), _mm_cmpeq_epi16(block, c7))));
      if (const int mask = _mm_movemask_epi8(hits)) return from + (__builtin_ctz(mask) >> 1);
      from += kVectorWidth;
    } while (end - from >= static_cast<ptrdiff_t>(kVectorWidth));
  }
#endif
  for (; from < end; ++from) {
    if (first->slotByLowByte[static_cast<uint8_t>(*from)] != kNoChild) return from;
  }
  return end;
}

inline SeparatorTrieNode::Candidate SeparatorTrieNode::findCandidate(const char16_t* from,
                                                                     const char16_t* end) {
  if (firstDirty) rebuildFirstCharacters();
  for (;;) {
    const char16_t* position = nextIndexedCharacter(from, end);
    if (position == end) return {end, nullptr};
    if (const SeparatorTrieNode* child = firstChild(*position)) return {position, child};
    from = position + 1;
  }
}

}  // namespace vantrelia
