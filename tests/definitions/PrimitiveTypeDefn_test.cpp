// Custom type records read from bytes laid out by hand, and the character check of their ranges.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "support/DefinitionBytes.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;

std::unique_ptr<PrimitiveTypeDefn> loadType(const PcfWriter& record, int version) {
  auto type = std::make_unique<PrimitiveTypeDefn>();
  testing::readExactly(record.bytes(), [&](DefinitionFile& file) { type->load(file, version); });
  return type;
}

// Name "T", id 5, base type 4, not an alias, the separator entries, the flag word and the expression.
PcfWriter typeUpToExpression(std::vector<bool> separators, int32_t flags, std::u16string_view expression = u"") {
  PcfWriter w;
  w.text8("T").i32(5).i32(4).boolean(false).i32(static_cast<int32_t>(separators.size()));
  for (bool entry : separators) w.boolean(entry);
  return std::move(w.i32(flags).text16(expression));
}

TEST(PrimitiveTypeDefnTest, RecordLayoutByVersionAndDerivedFlags) {
  struct Case {
    const char* what; int version; PcfWriter record; uint32_t flags; int8_t start, end; int allowedRanges, excludedRanges;
  } cases[] = {
      {"plain alias at 883 ends behind its flag", 883, std::move(PcfWriter().text8("T").i32(5).i32(4).boolean(true)), 0x02, -1, -1, 0, 0},
      {"853: no escapes, no ranges", 853, typeUpToExpression({}, 0, u"x"), 0, -1, -1, 0, 0},
      {"one allowed separator adds 0x04 to a zero flag word", 853, typeUpToExpression({false, true}, 0), 0x04, -1, -1, 0, 0},
      {"the flag word replaces and keeps its own bits", 869, typeUpToExpression({}, 0x41), 0x41, -1, -1, 0, 0},
      {"870 without escapes", 870, std::move(typeUpToExpression({}, 0).boolean(false)), 0, -1, -1, 0, 0},
      {"870 escapes keep the low byte", 870, std::move(typeUpToExpression({}, 0).boolean(true).i32(256 + 3).i32(0x1FF)), 0x08, 3,
       -1, 0, 0},
      {"873 ranges of both kinds", 873,
       std::move(typeUpToExpression({}, 0).boolean(false).i32(3).boolean(false).i32(0x20).i32(0x7E).boolean(true).i32(0x22).i32(
           0x22).boolean(false).i32(0xA0).i32(0xFF)),
       0, -1, -1, 2, 1},
      {"873 with a count of 0", 873, std::move(typeUpToExpression({}, 0).boolean(false).i32(0)), 0, -1, -1, 0, 0},
      {"873 with a negative count", 873, std::move(typeUpToExpression({}, 0).boolean(false).i32(-4)), 0, -1, -1, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto type = loadType(c.record, c.version);
    EXPECT_EQ(type->getName().str(), "T");
    EXPECT_EQ(type->getId(), 5);
    EXPECT_EQ(type->getFlags(), c.flags);
    EXPECT_EQ(type->rawStartEscapeCharacter(), c.start);
    EXPECT_EQ(type->rawEndEscapeCharacter(), c.end);
    EXPECT_EQ(type->getCharacterRanges() != nullptr, c.allowedRanges + c.excludedRanges > 0) << "no ranges read, none kept";
    EXPECT_EQ(type->getCharacterRangeCount(), c.allowedRanges + c.excludedRanges);
    if (const auto* ranges = type->getCharacterRanges()) {
      EXPECT_EQ(ranges->getAllowedRanges().size(), static_cast<size_t>(c.allowedRanges));
      EXPECT_EQ(ranges->getExcludedRanges().size(), static_cast<size_t>(c.excludedRanges));
    }
  }
}

TEST(PrimitiveTypeDefnTest, SeparatorEntriesAfterTheGivenOnesStayFalse) {
  const auto type = loadType(typeUpToExpression({false, true, false, false, false, false, true}, 1, u"[A-Z]\u0141+"), 853);
  for (int index = 0; index < kSeparatorCount; ++index)
    EXPECT_EQ(type->isSeparatorAllowed(static_cast<ESeparatorType>(index)), index == qxSepRepeat || index == qxSepField2);
  EXPECT_FALSE(type->getDoValidation());
  EXPECT_EQ(type->getRegularExpression().str(), u"[A-Z]\u0141+");
  EXPECT_TRUE(loadType(typeUpToExpression(std::vector<bool>(22, true), 0), 853)->isSeparatorAllowed(qxSepCrlf));
}

TEST(PrimitiveTypeDefnTest, EscapeAccessorsRefuseATypeWithoutEscapes) {
  const auto without = loadType(std::move(typeUpToExpression({}, 0).boolean(false)), 870);
  for (const auto accessor : {&PrimitiveTypeDefn::getStartEscapeCharacter, &PrimitiveTypeDefn::getEndEscapeCharacter}) {
    try {
      (without.get()->*accessor)();
      ADD_FAILURE() << "an escape character of a type without escapes";
    } catch (const IllegalOperation& e) {
      EXPECT_EQ(e.message, "This custom type does not have custom escape characters");
    }
  }
  const auto with = loadType(std::move(typeUpToExpression({}, 0).boolean(true).i32(qxSepUser1).i32(qxSepUser2)), 870);
  EXPECT_EQ(with->getStartEscapeCharacter(), qxSepUser1);
  EXPECT_EQ(with->getEndEscapeCharacter(), qxSepUser2);
}

TEST(CharacterRangesTest, TheFirstOffendingCharacterIsFound) {
  CharacterRanges printable;
  printable.add(false, 0x20, 0x7E);
  printable.add(false, 0xC0, 0xFF);
  printable.add(true, u'"', u'"');
  CharacterRanges onlyExcluded;
  onlyExcluded.add(true, u'0', u'9');
  struct Case { const CharacterRanges& ranges; std::u16string value; std::optional<size_t> failure; } cases[] = {
      {printable, u"", std::nullopt},
      {printable, u" ~", std::nullopt},              // both ends of a range count
      {printable, u"ab\u00C0\u00FF", std::nullopt},  // the second allowed range
      {printable, u"a\u001F", 1},
      {printable, u"ab\u007F", 2},
      {printable, u"a\"b\u0001", 1},  // excluded beats allowed, and the first offender wins
      {printable, u"\U0001F600", 0},  // each half of a surrogate pair is checked alone
      {onlyExcluded, u"", std::nullopt},
      {onlyExcluded, u"ab", 0},  // no allowed range: the first character of any value fails
  };
  for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].ranges.validate(cases[i].value), cases[i].failure) << i;
}

TEST(CharacterRangesTest, ViewIndexRunsThroughAllowedThenExcluded) {
  CharacterRanges ranges;
  ranges.add(true, 1, 1);
  ranges.add(false, 2, 2);
  ranges.add(true, 3, 3);
  const int32_t order[] = {2, 1, 3};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ranges.getCharacterRange(i).getStartChar(), order[i]);
    EXPECT_EQ(ranges.getCharacterRange(i).isAllowed(), i == 0);
  }
  EXPECT_THROW(ranges.getCharacterRange(3), BadParameter);
  EXPECT_THROW(ranges.getCharacterRange(-1), BadParameter);
}

}  // namespace
}  // namespace vantrelia
