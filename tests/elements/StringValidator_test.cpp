// Regular expressions of text fields and match entries: the whole text must match, in POSIX
// extended syntax over 16-bit units; "!" in front turns the answer round.

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "elements/StringValidator.h"

namespace vantrelia {
namespace {

TEST(StringValidator, TheWholeTextMustMatch) {
  struct Case {
    std::u16string expression;
    std::u16string text;
    bool good;
  } cases[] = {
      {u"[0-9]+", u"123", true},
      {u"[0-9]+", u"12a", false},  // a match inside the text isn't enough
      {u"[0-9]+", u"a12", false},
      {u"[0-9]+", u"", false},
      {u"[0-9]*", u"", true},
      {u"[a-z]+", u"ABC", false},  // case counts
      {u"(ab)+c?", u"ababc", true},
      {u"a{2,3}", u"aaa", true},  // extended syntax: braces and groups need no backslash
      {u"a{2,3}", u"aaaa", false},
      {u"ADT|ORM", u"ORM", true},
      // The anchors wrap the text as it stands, so they bind to the outer alternatives only.
      {u"ADT|ORM", u"ADTX", true},
      {u"ADT|ORM", u"XADT", false},
      {u"!^[0-9]+", u"abc", true},  // negated: a text that doesn't consist of digits is good
      {u"!^[0-9]+", u"123", false},
      {u"!", u"", false},           // "!" alone: the empty expression, turned round
      {u"!", u"x", true},
      {u"\u00e9+", u"\u00e9\u00e9", true},
      {u"a.b", std::u16string(u"a\0b", 3), true},   // a zero unit is a character like any other...
      {u"[0-9]+", std::u16string(u"12\0" u"3", 4), false},  // ...and doesn't end the text
      {std::u16string(u"a\0b", 3), std::u16string(u"a\0b", 3), true},  // nor the expression
      {std::u16string(u"a\0b", 3), u"a", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.expression.begin(), c.expression.end()) + " / " + std::string(c.text.begin(), c.text.end()));
    StringValidator validator(c.expression);
    EXPECT_EQ(validator.matches(c.text), c.good);
    EXPECT_EQ(validator.validate(c.text), c.good);
    EXPECT_EQ(validator.isNegated(), !c.expression.empty() && c.expression.front() == u'!');
  }
}

TEST(StringValidator, AnExpressionThatDoesNotCompileThrowsZero) {
  for (const char16_t* expression : {u"[a-", u"(ab", u"[[:nope:]]", u"*a", u"!(", u"a{3,2}"}) {
    SCOPED_TRACE(std::string(expression, expression + std::char_traits<char16_t>::length(expression)));
    try {
      StringValidator validator(expression);
      ADD_FAILURE() << "compiled";
    } catch (int thrown) {
      EXPECT_EQ(thrown, 0);
    }
  }
}

// A validator is no number: what the number operations give never depends on what it was told.
TEST(StringValidator, HoldsNoNumber) {
  StringValidator validator(u"[0-9]+");
  Formatter& formatter = validator;
  formatter.setDouble(12.5);
  formatter.setLong(7);
  EXPECT_FALSE(formatter.parse(u"123"));
  EXPECT_EQ(formatter.getText(), u"");
  EXPECT_EQ(formatter.getLong(), 0);
  EXPECT_EQ(formatter.getDouble(), 0.0);
  EXPECT_TRUE(formatter.validate(u"123"));
}

// A search that grows beyond bounds gives up: the text is refused whichever way round the
// expression is meant, and without a hang.
TEST(StringValidator, ATextTooCostlyToSearchIsRefused) {
  StringValidator validator(u"(a|aa|aaa)*(b|c)");
  StringValidator negated(u"!(a|aa|aaa)*(b|c)");
  EXPECT_TRUE(validator.matches(u"aaab"));
  EXPECT_TRUE(negated.matches(u"aaa"));
  std::u16string costly(40, u'a');
  costly.push_back(u'b');
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(validator.matches(costly));
  EXPECT_FALSE(negated.matches(costly));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

}  // namespace
}  // namespace vantrelia
