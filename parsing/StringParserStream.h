#pragma once
// The parser stream over text that is all in memory: the one concrete stream of the engine. It
// never owns the text; the text must outlive the stream.

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/TRVString.h"
#include "parsing/BufferedParserStream.h"
#include "parsing/SeparatorTrieNode.h"

namespace vantrelia {

class StringParserStream : public BufferedParserStream {
 public:
  explicit StringParserStream(const std::u16string& text);
  explicit StringParserStream(const kestrel::TRVString<char16_t>& text);
  // A negative length (-1 by convention) reads up to the first zero character, which isn't part of
  // the text. A null text is an empty text.
  StringParserStream(const char16_t* text, int32_t length);
  // The stream would outlive a temporary text.
  explicit StringParserStream(std::u16string&&) = delete;
  explicit StringParserStream(kestrel::TRVString<char16_t>&&) = delete;

  using BufferedParserStream::consume;

  void readToken(SeparatorTrieNode& root, ParserToken& token, int32_t maxLength,
                 bool applyReplacements) override;
  bool startsWith(std::u16string_view text) override;
  bool nextIs(char16_t character) override { return remaining > 0 && *current == character; }
  bool consume(const std::u16string& text) override;
  void readRest(ParserToken& token) override;
  std::u16string readRest() override;
  std::unique_ptr<char16_t[]> readRestCopy() override;
  void readChars(int32_t length, ParserToken& token) override;
  std::unique_ptr<ParserPosition> savePosition() override;
  // A holder that another stream handed out leaves the cursor where it is.
  void restorePosition(const ParserPosition& position) override;
  bool atEnd() const override { return remaining == 0; }

  // The text is all there: there is never more to fill in.
  bool fill(const char16_t* destination, int32_t missing) override;
  int32_t getRemaining() const override { return remaining; }
  int32_t getWholeRemaining() const override { return remaining; }

 private:
  // The walk of readToken from the first candidate on, for all but the plainest tokens. Returns
  // where the token ends; characters before that may already be in the token's text.
  const char16_t* cutToken(SeparatorTrieNode& root, ParserToken& token,
                           SeparatorTrieNode::Candidate found, const char16_t* end,
                           bool applyReplacements);
  // Moves the characters from the cursor up to to into the token's text.
  void appendToText(ParserToken& token, const char16_t* to);
};

}  // namespace vantrelia
