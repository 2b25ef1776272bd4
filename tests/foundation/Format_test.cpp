#include "foundation/Format.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "foundation/TextConversion.h"

namespace {

using vantrelia::formatMessage;
using vantrelia::formatWide;

TEST(FormatMessage, BuildsNarrowMessages) {
  EXPECT_EQ(formatMessage("Field too long: %d > %d", 12, 10), "Field too long: 12 > 10");
  EXPECT_EQ(formatMessage("Segment %s: %s", "NM1", "Unexpected segment"), "Segment NM1: Unexpected segment");
  EXPECT_EQ(formatMessage("%s", ""), "");
  // Longer than any small first guess at a buffer.
  const std::string longName(5000, 'x');
  EXPECT_EQ(formatMessage("[%s]", longName.c_str()), "[" + longName + "]");
}

TEST(FormatWide, StringAndCharacterConversions) {
  struct Case {
    const char* what;
    std::function<std::u16string()> format;
    std::u16string expected;
  };
  const Case cases[] = {
      {"%S takes narrow text", [] { return formatWide(u"Segment %S: Unexpected segment", "NM1"); },
       u"Segment NM1: Unexpected segment"},
      {"%s takes wide text and keeps every unit", [] { return formatWide(u"Value '%s'", u"\u0141\uFFE9x"); },
       u"Value '\u0141\uFFE9x'"},
      {"mixed with numbers", [] { return formatWide(u"Segment \"%S\" [%d]: %s", "REF", 3, u"Unexpected"); },
       u"Segment \"REF\" [3]: Unexpected"},
      {"%c takes a wide unit", [] { return formatWide(u"%c%c", u'A', 0x141); }, u"A\u0141"},
      {"width and left alignment", [] { return formatWide(u"%-4s|%4S|%3c|", u"ab", "cd", u'z'); },
       u"ab  |  cd|  z|"},
      {"precision cuts text", [] { return formatWide(u"%.2s %.1S %.9s", u"abc", "xyz", u"ab"); }, u"ab x ab"},
      {"star width and precision", [] { return formatWide(u"%*s|%.*S|%*d|", 3, u"a", 2, "wide", -4, 7); },
       u"  a|wi|7   |"},
      {"null texts", [] { return formatWide(u"%s %S", static_cast<const char16_t*>(nullptr),
                                            static_cast<const char*>(nullptr)); },
       u"(null) (null)"},
      {"percent sign", [] { return formatWide(u"100%% of %d", 5); }, u"100% of 5"},
      {"unknown conversion shows as written", [] { return formatWide(u"a%qb"); }, u"a%qb"},
      {"lone percent at the end", [] { return formatWide(u"end%"); }, u"end"},
      {"no conversions", [] { return formatWide(u"Unexpected segment"); }, u"Unexpected segment"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.format(), c.expected) << c.what;
}

// Numbers in a wide format must read exactly as the narrow printf writes them.
TEST(FormatWide, NumbersMatchNarrowFormatting) {
  struct Case {
    const char* what;
    std::function<std::u16string()> wide;
    std::function<std::string()> narrow;
  };
  const Case cases[] = {
      {"ints", [] { return formatWide(u"%d %i %5d|%-5d|%05d|%+d", -7, 8, 42, 42, 42, 3); },
       [] { return formatMessage("%d %i %5d|%-5d|%05d|%+d", -7, 8, 42, 42, 42, 3); }},
      {"unsigned", [] { return formatWide(u"%u %x %X %o %#x", 4000000000u, 255u, 255u, 8u, 31u); },
       [] { return formatMessage("%u %x %X %o %#x", 4000000000u, 255u, 255u, 8u, 31u); }},
      {"length modifiers", [] { return formatWide(u"%ld %lld %lu %zu %hd", -5L, 1LL << 40, 7UL, size_t{9}, 12); },
       [] { return formatMessage("%ld %lld %lu %zu %hd", -5L, 1LL << 40, 7UL, size_t{9}, short{12}); }},
      {"hex byte", [] { return formatWide(u"%.2X%.2X", 0x0Au, 0xFFu); },
       [] { return formatMessage("%.2X%.2X", 0x0Au, 0xFFu); }},
      {"floating", [] { return formatWide(u"%f %lf %.2f %e %g %.40g", 1.5, 2.25, 3.14159, 12345.678, 0.0001, 0.1); },
       [] { return formatMessage("%f %lf %.2f %e %g %.40g", 1.5, 2.25, 3.14159, 12345.678, 0.0001, 0.1); }},
      {"long double", [] { return formatWide(u"%Lf", 2.5L); }, [] { return formatMessage("%Lf", 2.5L); }},
      {"wide field", [] { return formatWide(u"%600d|", 1); }, [] { return formatMessage("%600d|", 1); }},
      {"long fixed-point", [] { return formatWide(u"%.300f", 1e300); },
       [] { return formatMessage("%.300f", 1e300); }},
  };
  for (const Case& c : cases) EXPECT_EQ(c.wide(), vantrelia::widen(c.narrow())) << c.what;
}

}  // namespace
