#include "foundation/TextConversion.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using vantrelia::narrow;
using vantrelia::widen;
using vantrelia::widenSigned;

TEST(TextConversion, NarrowKeepsTheLowByteOfEachUnit) {
  EXPECT_EQ(narrow(u"ISA"), "ISA");
  EXPECT_EQ(narrow(u"\u0141"), "\x41");
  EXPECT_EQ(narrow(u"\u00E9\uFFE9\u1200"), std::string("\xE9\xE9\x00", 3));
  EXPECT_EQ(narrow(u""), "");
}

TEST(TextConversion, DefinitionTextIsSignExtendedOtherTextIsNot) {
  EXPECT_EQ(widenSigned("\xE9"), u"\uFFE9");
  EXPECT_EQ(widenSigned("\x7F\x80"), u"\u007F\uFF80");
  EXPECT_EQ(widen("\xE9"), u"\u00E9");
  EXPECT_EQ(widen("\x7F\x80"), u"\u007F\u0080");
  EXPECT_EQ(widenSigned("NM1*"), u"NM1*");
  EXPECT_EQ(widen("NM1*"), u"NM1*");
}

// Both widenings must come back unchanged through narrow, for every byte value.
TEST(TextConversion, EveryByteSurvivesARoundTrip) {
  std::string bytes;
  for (int b = 0; b < 256; ++b) bytes += static_cast<char>(b);
  EXPECT_EQ(narrow(widenSigned(bytes)), bytes);
  EXPECT_EQ(narrow(widen(bytes)), bytes);
  EXPECT_EQ(widenSigned(bytes).size(), 256u);
}

}  // namespace
