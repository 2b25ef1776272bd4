// The stream's cursor operations: where each form of text ends, comparisons that must not read
// past the end, reads at the end, and saved positions.

#include <gtest/gtest.h>

#include <string>

#include "foundation/TextConversion.h"
#include "parsing/ParserPosition.h"
#include "parsing/ParserToken.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {
namespace {

using namespace std::string_literals;

TEST(StringParserStreamTest, WhereTheTextEnds) {
  const char16_t withZero[] = u"abc\0def";
  const std::u16string owned(withZero, 7);
  const kestrel::TRVString<char16_t> trv(owned);
  const struct {
    const char* name;
    StringParserStream stream;
    std::string text;
  } cases[] = {
      {"length -1 stops at the first zero", StringParserStream(withZero, -1), "abc"},
      {"a length counts zeros too", StringParserStream(withZero, 7), "abc\0def"s},
      {"a null text is empty", StringParserStream(nullptr, 5), ""},
      {"wide text", StringParserStream(owned), "abc\0def"s},
      {"TRVString", StringParserStream(trv), "abc\0def"s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    StringParserStream stream = c.stream;
    EXPECT_EQ(stream.getRemaining(), static_cast<int32_t>(c.text.size()));
    EXPECT_EQ(stream.atEnd(), c.text.empty());
    const std::unique_ptr<char16_t[]> copy = stream.readRestCopy();
    EXPECT_EQ(narrow(std::u16string_view(copy.get(), c.text.size())), c.text);
    EXPECT_EQ(copy[c.text.size()], u'\0');
    EXPECT_TRUE(stream.atEnd());
  }
}

TEST(StringParserStreamTest, Comparisons) {
  const struct {
    const char* name;
    std::u16string text, first, second;  // second empty: consume or startsWith of first alone
    bool matches;
    std::string rest;
  } cases[] = {
      {"match", u"abc", u"ab", u"", true, "c"},
      {"mismatch", u"abc", u"ac", u"", false, "abc"},
      {"longer than the text", u"ab", u"abc", u"", false, "ab"},
      {"zero in the stream", u"a\0b"s, u"ab", u"", false, "a\0b"s},
      {"argument ends at its zero", u"abx", u"ab\0cd"s, u"", true, "x"},
      {"longer first", u"abc", u"ab", u"abc", true, ""},
      {"longer first, either order", u"abc", u"abc", u"ab", true, ""},
      {"shorter when the longer fails", u"abd", u"ab", u"abc", true, "d"},
      {"neither", u"xbc", u"ab", u"abc", false, "xbc"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    StringParserStream stream(c.text);
    if (c.second.empty()) {
      EXPECT_EQ(stream.startsWith(c.first), c.matches);
      StringParserStream viaTrv(c.text);
      EXPECT_EQ(viaTrv.consume(kestrel::TRVString<char16_t>(c.first)), c.matches);
      EXPECT_EQ(narrow(viaTrv.readRest()), c.rest);
      EXPECT_EQ(stream.consume(c.first), c.matches);
    } else {
      EXPECT_EQ(stream.consumeLonger(c.first, c.second), c.matches);
    }
    EXPECT_EQ(narrow(stream.readRest()), c.rest);
  }
}

TEST(StringParserStreamTest, ReadsAtTheEnd) {
  const std::u16string text = u"abcde";
  StringParserStream stream(text);
  ParserToken token;
  EXPECT_EQ(narrow(stream.peek(10)), "abcde");
  EXPECT_EQ(stream.peek(-1), u"");
  stream.readChars(2, token);
  EXPECT_EQ(narrow(token.text), "ab");
  token.useView = true;
  stream.readChars(10, token);
  EXPECT_EQ(token.viewStart, text.data() + 2);
  EXPECT_EQ(narrow(token.characters()), "cde");
  EXPECT_TRUE(stream.atEnd());
  stream.readChars(1, token);
  EXPECT_EQ(token.viewLength, 0);
  stream.readRest(token);
  EXPECT_EQ(token.viewLength, 0);
  token.useView = false;
  stream.readRest(token);
  EXPECT_EQ(token.text, u"");
  EXPECT_EQ(stream.readRest(), u"");
  EXPECT_EQ(stream.peek(1), u"");
  EXPECT_FALSE(stream.startsWith(u"a"));
}

TEST(StringParserStreamTest, SavedPositionRestoresAnyNumberOfTimes) {
  const std::u16string text = u"header|body";
  StringParserStream stream(text);
  ASSERT_TRUE(stream.consume(u"header"s));
  const std::unique_ptr<ParserPosition> saved = stream.savePosition();
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(narrow(stream.readRest()), "|body") << "attempt " << attempt;
    EXPECT_TRUE(stream.atEnd());
    stream.restorePosition(*saved);
  }
  EXPECT_EQ(stream.getRemaining(), 5);

  // A position of another stream would point outside this text: the cursor stays.
  const std::u16string other = u"other text";
  StringParserStream foreign(other);
  stream.restorePosition(*foreign.savePosition());
  EXPECT_EQ(narrow(stream.readRest()), "|body");
}

}  // namespace
}  // namespace vantrelia
