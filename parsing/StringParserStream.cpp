#include "parsing/StringParserStream.h"

#include <algorithm>
#include <climits>

#include "foundation/Enumerations.h"
#include "parsing/ParserPosition.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserPositionData.h"

namespace vantrelia {

namespace {

// A stream over no text still points at a real, empty array.
constexpr char16_t kNoText[1] = {u'\0'};

int32_t clampedLength(size_t length) {
  return length > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(length);
}

int32_t lengthOf(const char16_t* text, int32_t length) {
  if (!text) return 0;
  return length < 0 ? clampedLength(std::char_traits<char16_t>::length(text)) : length;
}

// Where a walk of the trie ended. The node reached decides what was found, not the nodes passed
// on the way: with ab and abcd in force, abcx reaches the inner node of c and finds nothing.
struct TrieWalk {
  const SeparatorTrieNode* node;
  const char16_t* matchedEnd;  // behind the characters that led to node
  const char16_t* readEnd;     // behind the characters read, a character that failed included
  bool stoppedAtBound;         // ran into bound while node still had children
  const char16_t* endEscape;   // behind the first end-escape mark in force passed, if asked for
};

// Walks on from node over the text at p, where child is node's child for *p as findChild gives
// it, until a character has no child, a node has no children, or bound. With watchEndEscape it
// stops at the first node on the way that ends an escape in force.
template <bool watchEndEscape>
TrieWalk walkTrie(const SeparatorTrieNode* node, const char16_t* p, const char16_t* bound,
                  int32_t level, const SeparatorTrieNode* child) {
  for (;;) {
    if (!child) return {node, p, p + 1, false, nullptr};
    node = child;
    ++p;
    if constexpr (watchEndEscape) {
      if ((node->getFlags() & SeparatorTrieNode::kEndEscape) && node->getLevel() <= level) {
        return {node, p, p, false, p};
      }
    }
    if (!node->getHasChildren()) return {node, p, p, false, nullptr};
    if (p >= bound) return {node, p, p, true, nullptr};
    child = node->findChild(*p, level);
  }
}

// The walk from the root at a candidate, whose child the scan has already looked up.
template <bool watchEndEscape>
TrieWalk walkFromRoot(const SeparatorTrieNode& root, SeparatorTrieNode::Candidate candidate,
                      const char16_t* bound, int32_t level) {
  const SeparatorTrieNode* child = candidate.child;
  const bool passable = child->getLevel() <= level || child->getHasChildren();
  return walkTrie<watchEndEscape>(&root, candidate.position, bound, level, passable ? child : nullptr);
}

bool endsInForce(const SeparatorTrieNode& node, uint32_t bit, int32_t level) {
  return (node.getFlags() & bit) && node.getLevel() <= level;
}

void setToken(ParserToken& token, const char16_t* from, int32_t count) {
  token.separator = -1;
  if (token.useView) {
    token.viewStart = from;
    token.viewLength = count;
  } else {
    token.text.assign(from, static_cast<size_t>(count));
  }
}

}  // namespace

StringParserStream::StringParserStream(const std::u16string& text)
    : BufferedParserStream(text.data(), clampedLength(text.size())) {}

StringParserStream::StringParserStream(const kestrel::TRVString<char16_t>& text)
    : BufferedParserStream(text.c_str(), clampedLength(text.length())) {}

StringParserStream::StringParserStream(const char16_t* text, int32_t length)
    : BufferedParserStream(text ? text : kNoText, lengthOf(text, length)) {}

bool StringParserStream::fill(const char16_t*, int32_t) { return false; }

bool StringParserStream::startsWith(std::u16string_view text) { return matchedLength(text) >= 0; }

bool StringParserStream::consume(const std::u16string& text) {
  const int32_t length = matchedLength(text);
  if (length < 0) return false;
  advance(length);
  return true;
}

void StringParserStream::readRest(ParserToken& token) {
  setToken(token, current, remaining);
  advance(remaining);
}

std::u16string StringParserStream::readRest() {
  std::u16string rest(current, static_cast<size_t>(remaining));
  advance(remaining);
  return rest;
}

std::unique_ptr<char16_t[]> StringParserStream::readRestCopy() {
  auto rest = std::make_unique<char16_t[]>(static_cast<size_t>(remaining) + 1);
  std::char_traits<char16_t>::copy(rest.get(), current, static_cast<size_t>(remaining));
  advance(remaining);
  return rest;
}

void StringParserStream::readChars(int32_t length, ParserToken& token) {
  const int32_t count = std::clamp(length, 0, remaining);
  setToken(token, current, count);
  advance(count);
}

std::unique_ptr<ParserPosition> StringParserStream::savePosition() {
  return std::make_unique<ParserPositionWith<StringParserPositionData>>(current, remaining);
}

void StringParserStream::restorePosition(const ParserPosition& position) {
  const auto* saved = dynamic_cast<const StringParserPositionData*>(&position.getData());
  if (!saved) return;
  // The end of the text never moves, so a position of this stream lies that far before it.
  const char16_t* const textEnd = current + remaining;
  if (saved->remaining < 0 || saved->remaining > textEnd - start ||
      textEnd - saved->remaining != saved->position) {
    return;
  }
  current = saved->position;
  remaining = saved->remaining;
}

void StringParserStream::readToken(SeparatorTrieNode& root, ParserToken& token, int32_t maxLength,
                                   bool applyReplacements) {
  if (!token.useView) token.text.clear();
  token.separator = -1;

  const int32_t level = root.getLevel();
  const int32_t limit = maxLength <= 0 || maxLength > remaining ? remaining : maxLength;
  const char16_t* const end = current + limit;
  const char16_t* tokenEnd = end;
  if (limit > 0) {
    const SeparatorTrieNode::Candidate found = root.findCandidate(current, end);
    tokenEnd = found.position;
    if (tokenEnd != end) {
      // Most tokens end at a one-character separator in force; anything else takes the long way.
      const SeparatorTrieNode& child = *found.child;
      if (!child.getHasChildren() && endsInForce(child, SeparatorTrieNode::kSeparator, level)) {
        token.separator = child.getSeparatorIndex();
      } else {
        tokenEnd = cutToken(root, token, found, end, applyReplacements);
      }
    }
  }

  if (token.useView) {
    token.viewStart = current;
    token.viewLength = static_cast<int32_t>(tokenEnd - current);
    advance(token.viewLength);
  } else {
    appendToText(token, tokenEnd);
  }
}

void StringParserStream::appendToText(ParserToken& token, const char16_t* to) {
  token.text.append(current, static_cast<size_t>(to - current));
  advance(static_cast<int32_t>(to - current));
}

const char16_t* StringParserStream::cutToken(SeparatorTrieNode& root, ParserToken& token,
                                             SeparatorTrieNode::Candidate found,
                                             const char16_t* end, bool applyReplacements) {
  const int32_t level = root.getLevel();
  const char16_t* const textEnd = current + remaining;
  // From here the token is built as a copy: what was a view so far is dropped and rebuilt.
  auto leaveView = [&token] {
    if (token.useView) {
      token.text.clear();
      token.useView = false;
    }
  };

  const char16_t* candidate = found.position;
  for (;;) {
    const TrieWalk walk = walkFromRoot<false>(root, found, end, level);
    const SeparatorTrieNode& node = *walk.node;

    // A sequence that begins inside a limited read and ends behind it isn't cut in two: the token
    // stops before it, without a separator.
    if (walk.stoppedAtBound && end < textEnd) {
      const TrieWalk beyond = walkTrie<false>(walk.node, walk.readEnd, textEnd, level,
                                              walk.node->findChild(*walk.readEnd, level));
      if (!beyond.node->getHasChildren()) return candidate;
    }

    if (endsInForce(node, SeparatorTrieNode::kSeparator, level)) {
      token.separator = node.getSeparatorIndex();
      return candidate;
    }

    const char16_t* scan;
    if (endsInForce(node, SeparatorTrieNode::kStartEscape, level)) {
      // Up to the end-escape mark the text belongs to the token, whatever it holds, unless a
      // separator comes first. Without an end mark the token stops before the start mark. The
      // end mark is looked for from the start mark's last character on, so the two may overlap.
      const char16_t* from = walk.matchedEnd - 1;
      for (;;) {
        const SeparatorTrieNode::Candidate next = root.findCandidate(from, end);
        if (next.position == end) return candidate;
        const TrieWalk inner = walkFromRoot<true>(root, next, end, level);
        if (inner.endEscape) {
          leaveView();
          appendToText(token, inner.endEscape);
          scan = inner.endEscape;
          break;
        }
        if (endsInForce(*inner.node, SeparatorTrieNode::kSeparator, level)) {
          token.separator = inner.node->getSeparatorIndex();
          return inner.readEnd - 1;
        }
        from = next.position + 1;
      }
    } else {
      const bool isReplacement = node.getFlags() & SeparatorTrieNode::kReplacement;
      const std::optional<std::u16string>& replacement = node.getReplacement();
      // A line-end pair standing in for a separator whose first character is one the trie knows.
      const bool crlfStandsIn = node.getIsCrlf() && replacement && !replacement->empty() &&
                                root.isFirstCharacter(replacement->front());

      if (isReplacement && applyReplacements) {
        leaveView();
        appendToText(token, candidate);
        if (crlfStandsIn) return candidate;
        if (replacement) {
          token.text += *replacement;
          advance(static_cast<int32_t>(walk.matchedEnd - current));
        }
      }

      if (isReplacement && crlfStandsIn) {
        const SeparatorTrieNode* standIn = root.findChild(replacement->front(), level);
        if (standIn && standIn->getLevel() <= level) {
          token.separator = qxSepCrlf;
          return candidate;
        }
        scan = end - candidate >= 2 ? candidate + 2 : end;
      } else {
        scan = isReplacement ? walk.readEnd : candidate + 1;
      }
    }

    if (scan >= end) return end;
    found = root.findCandidate(scan, end);
    candidate = found.position;
    if (candidate == end) return end;
  }
}

}  // namespace vantrelia
