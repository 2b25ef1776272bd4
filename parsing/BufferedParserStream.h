#pragma once
// A parser stream over an array of characters with a cursor into it. The comparisons and peek
// live here; when the characters at hand are too few, they ask the subclass to fill in more.

#include <cstdint>
#include <string>
#include <string_view>

#include "parsing/ParserStream.h"

namespace vantrelia {

class BufferedParserStream : public ParserStream {
 public:
  bool startsWith(std::u16string_view text) override;
  const char16_t* getCursor() const override { return current; }
  bool nextIs(char16_t character) override { return ensureAvailable(1) && *current == character; }
  bool consume(const kestrel::TRVString<char16_t>& text) override;
  bool consume(const std::u16string& text) override;
  bool consumeLonger(const std::u16string& first, const std::u16string& second) override;
  std::u16string peek(int32_t length) override;

  // Asks for `missing` more characters, to go at destination, just behind the ones at hand; a
  // subclass that gets them raises remaining. False when no more text can be had.
  virtual bool fill(const char16_t* destination, int32_t missing) = 0;
  int32_t getRemaining() const override = 0;

 protected:
  BufferedParserStream(const char16_t* text, int32_t length)
      : start(text), current(text), remaining(length) {}

  // The length of text up to its first zero, which is what a comparison looks at.
  static size_t comparedLength(std::u16string_view text) {
    size_t length = 0;
    while (length < text.size() && text[length] != u'\0') ++length;
    return length;
  }
  // True if the characters at the cursor are the first length characters of text; never asks for
  // more.
  bool matchesHere(std::u16string_view text, size_t length) const {
    if (length > static_cast<size_t>(remaining)) return false;
    for (size_t i = 0; i < length; ++i) {
      if (current[i] != text[i]) return false;
    }
    return true;
  }
  // The length of text up to its first zero if the characters at the cursor begin with it, -1 if
  // they don't; never asks for more. One pass, for the streams whose text is all there.
  int32_t matchedLength(std::u16string_view text) const {
    size_t length = 0;
    for (; length < text.size() && text[length] != u'\0'; ++length) {
      if (length >= static_cast<size_t>(remaining) || current[length] != text[length]) return -1;
    }
    return static_cast<int32_t>(length);
  }
  // True if at least count characters are at hand, after asking fill for the missing ones.
  bool ensureAvailable(size_t count);
  void advance(int32_t count) {
    current += count;
    remaining -= count;
  }

  const char16_t* start;    // the first character of the text; never moves
  const char16_t* current;  // the next character to read
  int32_t remaining;        // characters from current to the end of the text
};

}  // namespace vantrelia
