#pragma once
// The one cursor through which all parsing reads wire text. It knows nothing of messages: it
// compares, consumes, peeks, saves and restores its place, and cuts the next token at a separator
// by walking a separator trie. The text belongs to the caller and must outlive the stream.
//
// Comparisons are exact, character by character. A text argument counts up to its first zero
// character, and a zero in the stream's text never matches, as with zero-terminated strings.
// Nothing here throws: a comparison that fails returns false and leaves the cursor alone, and a
// read at the end of the text gives an empty token.

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/TRVString.h"

namespace vantrelia {

class ParserPosition;
class SeparatorTrieNode;
struct ParserToken;

class ParserStream {
 public:
  virtual ~ParserStream() = default;

  // Cuts the next token at the first separator of the trie that is in force at the root's level,
  // or after maxLength characters (0: no limit), and fills token. The separator itself stays in
  // the stream; the caller consumes it once it knows which one it was. With applyReplacements,
  // replacement sequences in the token are turned into the text they stand for.
  virtual void readToken(SeparatorTrieNode& root, ParserToken& token, int32_t maxLength,
                         bool applyReplacements) = 0;
  // True if the text at the cursor begins with text. Doesn't advance.
  virtual bool startsWith(std::u16string_view text) = 0;
  // True if the next character is that one: the one-character test of every field read, kept
  // apart from startsWith because it runs once per value.
  virtual bool nextIs(char16_t character) = 0;
  // If the text at the cursor begins with text, advances past it and returns true.
  virtual bool consume(const kestrel::TRVString<char16_t>& text) = 0;
  virtual bool consume(const std::u16string& text) = 0;
  // Consumes the longer of two texts if it is there, else the other; of two of equal length,
  // second is tried first. True if one was consumed.
  virtual bool consumeLonger(const std::u16string& first, const std::u16string& second) = 0;
  // All that remains goes into token (a view if token.useView is set); the stream is left at its end.
  virtual void readRest(ParserToken& token) = 0;
  virtual std::u16string readRest() = 0;
  // All that remains as a zero-terminated array; the stream is left at its end.
  virtual std::unique_ptr<char16_t[]> readRestCopy() = 0;
  // Up to length characters from the cursor, fewer at the end of the text. Doesn't advance.
  virtual std::u16string peek(int32_t length) = 0;
  // Takes min(length, remaining) characters into token (a view if token.useView is set) and
  // advances past them.
  virtual void readChars(int32_t length, ParserToken& token) = 0;
  virtual std::unique_ptr<ParserPosition> savePosition() = 0;
  virtual void restorePosition(const ParserPosition& position) = 0;
  virtual bool atEnd() const = 0;
  // The character the cursor stands on, where the text lies in memory as a whole; else null.
  virtual const char16_t* getCursor() const { return nullptr; }
  // How many characters from the cursor on are in memory behind it, up to the end of the text; 0
  // where the text isn't all there.
  virtual int32_t getWholeRemaining() const { return 0; }
  // How many characters are left from the cursor on; -1 where the stream can't tell.
  virtual int32_t getRemaining() const { return -1; }
};

}  // namespace vantrelia
