// Number pictures: how a picture is taken apart, how numbers are written through it and read back
// from wire text, at the edges of implied decimals, signs, overpunched digits, grouping, scaling,
// literals, rounding and numbers too long for the picture.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "definitions/PcfMessages.h"
#include "elements/SectionedNumberFormatter.h"
#include "support/DefinitionBytes.h"
#include "support/ElementTesting.h"

namespace vantrelia {
namespace {

using testing::invalidFileMessage;
using testing::narrow;
using testing::wide;

TEST(NumberPicture, TheConstructorSettlesGroupingScalingAndDigitPlaces) {
  struct Case {
    const char* picture;
    const char* format;  // after the constructor's changes
    bool hasThousands;
    double multiplier;
    size_t digitPlaces, fractionPlaces;
  } cases[] = {
      {"#,##0.0#", "###0.0#", true, 1.0, 6, 2},
      {"0.00,,", "0.00,,", true, 1.0, 3, 2},  // commas behind the point are literals
      {"0,,.00", "0.00", false, 1e6, 3, 2},   // commas before it scale
      {"0,,", "0", false, 1e6, 1, 0},
      {"0%", "0%", false, 0.01, 1, 0},
      {"##0##", "##000", false, 1.0, 5, 0},  // from the first "0" on every place shows a digit
      {"#0.#0", "#0.00", false, 1.0, 4, 2},  // and behind the point up to the last "0"
      {"#.##", "#.##", false, 1.0, 3, 2},
      {"#v##", "#v00", false, 1.0, 3, 2},    // implied decimals always show
      {"00000v0!", "00000v0!", false, 1.0, 7, 2},
      {"\\#0\\,0", "\\#0\\,0", false, 1.0, 2, 0},  // escaped characters are no picture characters
      {"\\\\0", "\\\\0", false, 1.0, 1, 0},      // nor is an escaped backslash an escape
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.picture);
    const SectionedNumberFormatter picture(wide(c.picture));
    const SimpleNumberFormatter& section = picture.getPositive();
    EXPECT_EQ(narrow(section.getFormat()), c.format);
    EXPECT_EQ(section.getHasThousands(), c.hasThousands);
    EXPECT_DOUBLE_EQ(section.getMultiplier(), c.multiplier);
    EXPECT_EQ(section.getDigitPlaces(), c.digitPlaces);
    EXPECT_EQ(section.getFractionPlaces(), c.fractionPlaces);
  }
}

TEST(NumberPicture, SectionsSplitAtTheFirstUnescapedSemicolon) {
  struct Case {
    const char* picture;
    const char* positive;
    const char* negative;  // null: one section
  } cases[] = {
      {"0", "0", nullptr},
      {"0;", "0", nullptr},                  // an empty rest makes no section
      {"0;(0)", "0", "(0)"},
      {"0;(0);x", "0", "(0)"},               // a third section is dropped
      {"0\\;0", "0\\;0", nullptr},           // an escaped ";" stays in its section
      {"0\\\\;(0)", "0\\\\", "(0)"},         // behind an escaped backslash it splits
      {"0\\\\\\;0;-0", "0\\\\\\;0", "-0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.picture);
    const SectionedNumberFormatter picture(wide(c.picture));
    EXPECT_EQ(narrow(picture.getFormat()), c.picture);
    EXPECT_EQ(narrow(picture.getPositive().getFormat()), c.positive);
    if (c.negative) {
      ASSERT_NE(picture.getNegative(), nullptr);
      EXPECT_EQ(narrow(picture.getNegative()->getFormat()), c.negative);
    } else {
      EXPECT_EQ(picture.getNegative(), nullptr);
    }
  }
}

// Every number needs a section to go by: a picture without one is refused when it is built.
TEST(NumberPicture, EmptySectionsAreRefused) {
  for (const char* picture : {"", ";", ";0", "0;;", "0;;(0)"}) {
    SCOPED_TRACE(picture);
    EXPECT_EQ(invalidFileMessage([&] { SectionedNumberFormatter formatter{wide(picture)}; }),
              messages::kEmptyNumberFormatSection);
  }
}

TEST(NumberPicture, WritesNumbersInThePicturesForm) {
  struct Case {
    const char* picture;
    double number;
    const char* text;
  } cases[] = {
      {"000.00", 3.5, "003.50"},
      {"#.##", 3.5, "3.5"},
      {"#.##", 0, "."},
      {"#.##", 5, "5."},  // the point stands even with no fraction digit behind it
      {"0.00", 0.5, "0.50"},
      {"0.00", -1.5, "-1.50"},  // without a sign in the picture a "-" goes in front
      {"0000000v00", 12.34, "000001234"},
      {"0000v00", 0.05, "000005"},
      {"000000!", -123, "000012L"},
      {"000000!", 123, "000012C"},
      {"000000!", 120, "000012{"},
      {"000000!", -120, "000012}"},
      {"00000v0!", -1.20, "000012}"},  // the sign stands on the last place, and no "-" is added
      {"!00", -5, "-}05"},              // a sign place in the filler shows a zero's sign, not the number's
      {"!00", -123, "J23"},
      {"#,##0", 1234567, "1,234,567"},   // more digits than places: none is cut
      {"#,##0", 5, "5"},
      {"0,000", 5, "0,005"},
      {"#,##0.00", 1234567.5, "1,234,567.50"},
      {"0.00,,", 1.5, "1.50,,"},
      {"0,,", 5000000, "5"},
      {"0,,.00", 5000000, "5.00"},
      {"0%", 0.25, "25%"},
      {"$#,##0.00;($#,##0.00)", -5, "($5.00)"},
      {"$#,##0.00;($#,##0.00)", 1234.5, "$1,234.50"},
      {"###", 0, "000"},                 // a digit text of zeros is kept whole
      {"ABC", 7, "ABC"},                 // only literals: no digits and no sign
      {"ABC", -7, "ABC"},
      {"00-00", 1234, "12-34"},
      {"00-00", 5, "00-05"},
      {"00", 12345, "12345"},
      {"\\#0", 5, "#5"},
      {"\\v0", 5, "v5"},
      {"0\\;0", 12, "1;2"},
      {"00v", 12.7, "13"},
      // Rounding is that of formatted output, on the number as a double holds it.
      {"0", 2.5, "2"},
      {"0", 3.5, "4"},
      {"0.0", 0.25, "0.2"},
      {"0.00", 2.675, "2.67"},
      {"0.00", 2.6751, "2.68"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.picture) + " " + std::to_string(c.number));
    SectionedNumberFormatter picture(wide(c.picture));
    picture.setDouble(c.number);
    EXPECT_EQ(narrow(picture.getText()), c.text);
  }
}

TEST(NumberPicture, ReadsWireTextIntoNumbers) {
  struct Case {
    const char* picture;
    const char* text;
    bool read;
    double number;
  } cases[] = {
      {"0000000v00", "000001234", true, 12.34},
      {"0000v00", "5", true, 0.05},  // a short text is filled with zeros in front of the implied point
      {"000000!", "000012L", true, -123},
      {"000000!", "000012C", true, 123},
      {"000000!", "000012}", true, -120},
      {"000000!", "0001230", true, 1230},  // a plain digit on the sign place is taken without complaint
      {"00000v0!", "000012}", true, -1.2},
      {"#,##0", "1234567", true, 1234567},
      {"#,##0", "1,234,567", false, 0},   // commas go only in a run of digits that a picture character ends
      {"#,##0.00", "1,234,567.50", true, 1234567.5},
      {"0,,", "5", true, 5000000},
      {"0%", "25%", true, 0.25},
      {"$#,##0.00;($#,##0.00)", "($5.00)", true, -5},
      {"$#,##0.00;($#,##0.00)", "$1,234.50", true, 1234.5},
      {"$#,##0.00;($#,##0.00)", "5.00", false, 0},
      {"0.00", "-1.50", true, -1.5},
      {"-0", "-5", true, 5},  // a picture that begins with "-" takes it as a literal
      {"-0", "-5x", false, 0},
      {"ABC", "ABC7", true, 7},
      {"ABC", "ABX7", false, 0},
      {"0", "12.5", false, 0},   // no fraction places: a whole number only
      {"0.00", "12.5x", false, 0},
      {"0.00", "inf", false, 0},
      {"0.00", "0x1A", false, 0},
      {"0", "", true, 0},        // nothing to convert leaves nothing unconverted
      {"\\v0", "v5", true, 5},
      {"0\\;0", "1;2", true, 12},
      {"00", "12345", true, 12345},  // the count of digits isn't held against the places
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.picture) + " " + c.text);
    SectionedNumberFormatter picture(wide(c.picture));
    picture.setDouble(99);
    EXPECT_EQ(picture.parse(wide(c.text)), c.read);
    EXPECT_EQ(picture.validate(wide(c.text)), c.read);
    EXPECT_DOUBLE_EQ(picture.getDouble(), c.read ? c.number : 99.0);  // a refusal leaves the number
  }
}

// What the picture writes, it reads back as the same number: the reader is checked against the
// writer over pictures of every kind of place.
TEST(NumberPicture, WrittenNumbersReadBack) {
  const char* const pictures[] = {"0000000v00", "00000v0!", "$#,##0.00;($#,##0.00)", "#,##0.00", "0.00%", "0,,.00",
                                  "#.00", "X0000!Y"};
  const double numbers[] = {0, 1, -1, 0.5, -0.25, 12.34, -999.99, 1234567.89, 5000000};
  for (const char* text : pictures) {
    SectionedNumberFormatter picture(wide(text));
    for (const double number : numbers) {
      SCOPED_TRACE(std::string(text) + " " + std::to_string(number));
      picture.setDouble(number);
      const std::u16string written = picture.getText();
      picture.setDouble(-12345);
      ASSERT_TRUE(picture.parse(written)) << narrow(written);
      // What the picture can't show is rounded away: two fraction places, or whole millions.
      const double precision = std::string(text) == "0,,.00" ? 5000.0 : std::string(text) == "X0000!Y" ? 0.5 : 0.005;
      EXPECT_NEAR(picture.getDouble(), number, precision) << narrow(written);
    }
  }
}

// Every overpunched last digit, both ways, against the zoned-decimal table that signed amounts on
// the wire use ("{" and "A" to "I" for +0 to +9, "}" and "J" to "R" for -0 to -9), on a picture
// with two implied decimals as such amounts have.
TEST(NumberPicture, EveryOverpunchedDigitReadsAndWritesItsSign) {
  const std::string positive = "{ABCDEFGHI";
  const std::string negative = "}JKLMNOPQR";
  SectionedNumberFormatter picture(u"00000v0!");
  for (int digit = 0; digit < 10; ++digit) {
    for (const int sign : {1, -1}) {
      const char punched = (sign > 0 ? positive : negative)[static_cast<size_t>(digit)];
      const std::string text = std::string("000123") + punched;  // 12.3 and the digit, with its sign
      const double number = sign * (12.3 + digit / 100.0);
      SCOPED_TRACE(text);
      picture.setDouble(99);
      ASSERT_TRUE(picture.parse(wide(text)));
      EXPECT_NEAR(picture.getDouble(), number, 1e-9);
      picture.setDouble(number);
      EXPECT_EQ(narrow(picture.getText()), text);
    }
  }
}

TEST(NumberPicture, WholeNumbersAreCutTowardsZeroWithinThirtyTwoBits) {
  struct Case {
    double number;
    int32_t whole;
  } cases[] = {
      {2.7, 2},
      {-2.7, -2},
      {2147483647.0, std::numeric_limits<int32_t>::max()},
      {1e12, std::numeric_limits<int32_t>::max()},
      {-1e12, std::numeric_limits<int32_t>::min()},
      {std::nan(""), 0},
  };
  SectionedNumberFormatter picture(u"0");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.number);
    picture.setDouble(c.number);
    EXPECT_EQ(picture.getLong(), c.whole);
  }
  picture.setLong(-5);
  EXPECT_EQ(picture.getDouble(), -5.0);
  EXPECT_EQ(narrow(picture.getText()), "-5");
}

}  // namespace
}  // namespace vantrelia
