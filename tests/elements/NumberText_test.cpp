// Whole texts read as one number, the way pictures and field writers take values: what the C
// library's conversions would take in full, and nothing that only a part of them would.

#include <gtest/gtest.h>

#include <string>

#include "elements/NumberText.h"

namespace vantrelia {
namespace {

TEST(NumberText, WholeNumbers) {
  struct Case {
    std::u16string text;
    bool read;
    int64_t number;
  } cases[] = {
      {u"42", true, 42},
      {u"-42", true, -42},
      {u"+42", true, 42},
      {u" \t42", true, 42},  // white space in front is passed over...
      {u"42 ", false, 0},    // ...but nothing may be left behind
      {u"", true, 0},        // an empty text converts nothing and leaves nothing
      {u"  ", false, 0},
      {u"+", false, 0},
      {u"+-4", false, 0},
      {u"4.2", false, 0},
      {u"0x1A", false, 0},
      {u"9223372036854775807", true, 9223372036854775807},
      {u"9223372036854775808", false, 0},
      {std::u16string(u"4\0" u"2", 3), false, 0},  // a zero unit doesn't end the text
      {u"\u0664\u0662", false, 0},                  // digits of other scripts are no digits here
      {u"\uff14\uff12", false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    int64_t number = -1;
    EXPECT_EQ(NumberText::readLong(c.text, number), c.read);
    EXPECT_EQ(number, c.read ? c.number : -1);
  }
}

TEST(NumberText, RealNumbers) {
  struct Case {
    std::u16string text;
    bool read;
    double number;
  } cases[] = {
      {u"4.25", true, 4.25},
      {u"-0.5", true, -0.5},
      {u"+.5", true, 0.5},
      {u"5.", true, 5.0},
      {u"1e3", true, 1000.0},
      {u"1E-2", true, 0.01},
      {u"", true, 0.0},
      {u".", false, 0},
      {u"1e", false, 0},
      {u"1,5", false, 0},
      {u"1e999", false, 0},  // beyond a double
      {u"inf", false, 0},
      {u"-infinity", false, 0},
      {u"nan", false, 0},
      {u"0x1p3", false, 0},
      {u"4.25 ", false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    double number = -1;
    EXPECT_EQ(NumberText::readDouble(c.text, number), c.read);
    EXPECT_DOUBLE_EQ(number, c.read ? c.number : -1);
  }
}

}  // namespace
}  // namespace vantrelia
