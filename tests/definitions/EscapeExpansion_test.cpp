// Escapes in definition texts: which ones expand, and where expansion leaves the text alone.

#include <gtest/gtest.h>

#include "definitions/EscapeExpansion.h"
#include "foundation/Utf8.h"

namespace vantrelia {
namespace {

TEST(EscapeExpansionTest, ExpandsOnlyCompleteSmallLetterEscapes) {
  const struct { std::u16string text; std::u16string expanded; } cases[] = {
      {u"\\x0D", u"\r"},
      {u"\\u000D", u"\r"},
      {u"a\\x4a\\x4Ab", u"aJJb"},          // digits of either case
      {u"\\uFFe9", u"\xFFE9"},
      {u"\\u0041BC", u"ABC"},              // only four digits belong to the escape
      {u"\\q", u"\\q"},                    // any other letter keeps its backslash
      {u"\\X41\\U0041", u"\\X41\\U0041"},  // the letter must be small
      {u"\\xG1\\x4G\\u004Z", u"\\xG1\\x4G\\u004Z"},
      {u"ab\\x0", u"ab\\x0"},              // too short at the end: stop
      {u"\\u12", u"\\u12"},
      {u"\\u12\\x41", u"\\u12A"},          // long enough, not digits: go on behind the backslash
      {u"\\x5Cx41", u"\\x41"},             // a produced backslash starts no escape
      {u"\\\\x41", u"\\A"},                // a kept backslash doesn't hide the next one
      {u"end\\", u"end\\"},
      {u"", u""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(expandEscapes(c.text), c.expanded) << wideToUtf8(c.text);
}

TEST(EscapeExpansionTest, ZeroCharacterEndsTheStoredText) {
  EXPECT_EQ(expandEscapes(u"a\\u0000b"), std::u16string(u"a\0b", 3));
  EXPECT_EQ(expandEscapesToText(u"a\\u0000b").str(), u"a");
  EXPECT_TRUE(expandEscapesToText(u"\\x00z").empty());
  EXPECT_EQ(expandEscapesToText(u"\\x41\\x42").str(), u"AB");
}

}  // namespace
}  // namespace vantrelia
