#include "foundation/TRVString.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Narrow = kestrel::TRVString<char>;
using Wide = kestrel::TRVString<char16_t>;

// Every way of making an empty string must give a real, terminated one-element array.
TEST(TRVString, EveryEmptyFormHasATerminatedBuffer) {
  Narrow assigned("text");
  assigned.assign("ignored", 0);
  Narrow moved("text");
  Narrow target(std::move(moved));
  const Narrow fromNull(static_cast<const char*>(nullptr));
  const Narrow* cases[] = {&assigned, &moved, &fromNull};
  for (const Narrow* s : cases) {
    ASSERT_NE(s->c_str(), nullptr);
    EXPECT_EQ(s->c_str()[0], '\0');
    EXPECT_EQ(s->length(), 0u);
  }
  const Wide wide;
  ASSERT_NE(wide.c_str(), nullptr);
  EXPECT_EQ(wide.c_str()[0], u'\0');
  EXPECT_EQ(target, Narrow("text"));
}

TEST(TRVString, CopiesAreDeep) {
  Wide original(u"ISA*00");
  Wide copy(original);
  Wide assigned;
  assigned = original;
  EXPECT_NE(copy.c_str(), original.c_str());
  EXPECT_NE(assigned.c_str(), original.c_str());
  original = std::u16string(u"GS");
  EXPECT_TRUE(copy == u"ISA*00");
  EXPECT_TRUE(assigned == u"ISA*00");
  EXPECT_TRUE(original == u"GS");
}

// Assigning a piece of the string to itself must not read freed memory.
TEST(TRVString, AssignFromOwnText) {
  Narrow s("ABCDEF");
  s.assign(s.c_str() + 2, 3);
  EXPECT_STREQ(s.c_str(), "CDE");
  EXPECT_EQ(s.length(), 3u);
  s = s;
  EXPECT_STREQ(s.c_str(), "CDE");
}

TEST(TRVString, KeepsWideUnitsAndEmbeddedZeros) {
  const std::u16string text(u"A\0\u0141\uFFE9", 4);
  const Wide s(text);
  EXPECT_EQ(s.length(), 4u);
  EXPECT_EQ(s.str(), text);
  EXPECT_EQ(s.c_str()[4], u'\0');
}

TEST(TRVString, Substr) {
  struct Case {
    Narrow::size_type position;
    Narrow::size_type count;
    const char* expected;
  };
  const Case cases[] = {
      {0, Narrow::npos, "ABCDEF"}, {2, 2, "CD"}, {4, 10, "EF"}, {4, Narrow::npos, "EF"},
      {0, 0, ""},                  {6, 1, ""},   {9, 1, ""},
  };
  const Narrow s("ABCDEF");
  for (const Case& c : cases) {
    const Narrow piece = s.substr(c.position, c.count);
    EXPECT_STREQ(piece.c_str(), c.expected) << "substr(" << c.position << ", " << c.count << ")";
    EXPECT_EQ(piece.length(), std::char_traits<char>::length(c.expected));
  }
}

TEST(TRVString, NarrowCompareWithWideText) {
  struct Case {
    const char* narrow;
    std::u16string wide;
    Narrow::size_type count;
    int expected;
  };
  const Case cases[] = {
      {"ABC", u"ABC", 3, 0},
      {"ABC", u"ABD", 3, -1},
      {"ABD", u"ABC", 3, 1},
      {"ABC", u"AB", 2, 1},
      {"AB", u"ABC", 3, -1},
      {"", u"", 0, 0},
      {"ABC", u"", 0, 1},
      {"", u"A", 1, -1},
      {"AB", u"ABC", 2, 0},       // only `count` units of the wide text take part
      {"A", u"\u0141", 1, 0},     // the high byte of the unit is ignored
      {"\xE9", u"A", 1, -1},      // bytes compare as signed: 0xE9 is below 'A'
      {"A", u"\u00E9", 1, 1},
      {"\xE9", u"\uFFE9", 1, 0},  // a sign-extended byte matches itself
  };
  for (const Case& c : cases)
    EXPECT_EQ(Narrow(c.narrow).compare(c.wide.c_str(), c.count), c.expected)
        << '"' << c.narrow << "\" count " << c.count;
}

TEST(TRVString, WideEqualityNeedsEveryUnitAndTheLength) {
  const Wide ab(u"AB");
  EXPECT_TRUE(ab == u"AB");
  EXPECT_FALSE(ab == u"ABC");
  EXPECT_FALSE(ab == u"A");
  EXPECT_FALSE(ab == u"AC");
  EXPECT_FALSE(ab == u"\u0141B");
  EXPECT_TRUE(Wide() == u"");
  EXPECT_FALSE(Wide(std::u16string(u"A\0B", 3)) == u"A");
}

}  // namespace
