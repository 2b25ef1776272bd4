#include "parsing/BufferedParserStream.h"

#include <algorithm>

namespace vantrelia {

bool BufferedParserStream::ensureAvailable(size_t count) {
  if (count <= static_cast<size_t>(remaining)) return true;
  const size_t missing = count - static_cast<size_t>(remaining);
  if (missing > static_cast<size_t>(INT32_MAX)) return false;
  return fill(current + remaining, static_cast<int32_t>(missing)) &&
         count <= static_cast<size_t>(remaining);
}

bool BufferedParserStream::startsWith(std::u16string_view text) {
  const size_t length = comparedLength(text);
  return ensureAvailable(length) && matchesHere(text, length);
}

bool BufferedParserStream::consume(const kestrel::TRVString<char16_t>& text) {
  const size_t length = comparedLength(text.view());
  if (!ensureAvailable(length) || !matchesHere(text.view(), length)) return false;
  advance(static_cast<int32_t>(length));
  return true;
}

bool BufferedParserStream::consume(const std::u16string& text) {
  const size_t length = comparedLength(text);
  if (!ensureAvailable(length) || !matchesHere(text, length)) return false;
  advance(static_cast<int32_t>(length));
  return true;
}

bool BufferedParserStream::consumeLonger(const std::u16string& first, const std::u16string& second) {
  // The longer goes first, so that "ab" doesn't take the front of "abc"; a tie goes to second.
  const bool firstIsLonger = comparedLength(first) > comparedLength(second);
  const std::u16string& longer = firstIsLonger ? first : second;
  const std::u16string& other = firstIsLonger ? second : first;
  return consume(longer) || consume(other);
}

std::u16string BufferedParserStream::peek(int32_t length) {
  if (length <= 0) return {};
  ensureAvailable(static_cast<size_t>(length));
  return std::u16string(current, static_cast<size_t>(std::min(length, remaining)));
}

}  // namespace vantrelia
