// The error numbers: their range, texts as described and as raised, and default severities.

#include <gtest/gtest.h>

#include <set>

#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/Format.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {
namespace {

TEST(ValidationErrorNumbersTest, RangeIsCheckedAtBothEnds) {
  for (int32_t number : {0, 1000, 1053, -1001}) {
    EXPECT_EQ(std::u16string(getErrorDescription(number)), messages::kNoErrorDescription) << number;
    try {
      checkErrorNumber(number);
      ADD_FAILURE() << number << " passed the check";
    } catch (const BadParameter& e) {
      EXPECT_STREQ(e.what(), "Specified error number is out of the valid range");
    }
    EXPECT_THROW(getRaisedText(number), BadParameter) << number;
  }
  EXPECT_NO_THROW(checkErrorNumber(verr::kFirst));
  EXPECT_NO_THROW(checkErrorNumber(verr::kLast));
  EXPECT_EQ(std::u16string(getErrorDescription(1053)),
            u"No error description available. (Time to update your engine?)");
}

TEST(ValidationErrorNumbersTest, DescriptionsAreDistinctAndSomeAreKnownByHeart) {
  std::set<std::u16string> seen;
  for (int32_t number = verr::kFirst; number <= verr::kLast; ++number) {
    const std::u16string text = getErrorDescription(number);
    EXPECT_FALSE(text.empty()) << number;
    EXPECT_TRUE(seen.insert(text).second) << number << " repeats a description";
  }
  EXPECT_EQ(std::u16string(getErrorDescription(verr::kRequiredSegmentMissing)), u"Required segment missing");
  EXPECT_EQ(std::u16string(getErrorDescription(verr::kInvalidCharacters)), u"Invalid character(s) in field");
  EXPECT_EQ(std::u16string(getErrorDescription(verr::kRepeatCountNotInteger)), u"Repeat counter value was not an integer");
}

TEST(ValidationErrorNumbersTest, RaisedTextsFormatAsHostsSeeThem) {
  EXPECT_EQ(std::u16string(getRaisedText(verr::kRequiredFieldMissing)), getErrorDescription(verr::kRequiredFieldMissing));
  EXPECT_NE(std::u16string(getRaisedText(verr::kInvalidCharacters)), getErrorDescription(verr::kInvalidCharacters));
  struct Case {
    std::u16string got;
    std::u16string want;
  } cases[] = {
      {formatWide(getRaisedText(verr::kUnknownSegment), 12), u"Segment [12] : Unknown segment, ignored"},
      {formatWide(getRaisedText(verr::kUnexpectedSegment), "ZZ1", 4), u"Segment \"ZZ1\" [4]: Unexpected segment"},
      {formatWide(verr::kUnexpectedSegmentTagged, "ZZ1"), u"Segment ZZ1: Unexpected segment"},
      {formatWide(getRaisedText(verr::kFieldTooShort), 3, 5), u"Field too short: 3 < 5"},
      {formatWide(getRaisedText(verr::kArrayTooManyItems), 9, 4), u"Array has More than Maximum Items: 9 > 4"},
      {formatWide(getRaisedText(verr::kCharacterOutOfRange), int(u'\u00e9')), u"Character '\u00e9' not in allowable range"},
      {formatWide(getRaisedText(verr::kRepeatCountNotInteger), u"x2"), u"Specified repeat count is not a valid integer: x2"},
      {formatWide(verr::kUnknownEmbeddedMessageNamed, "X12"), u"Unknown embedded message found: X12"},
      {getRaisedText(verr::kExtraDataAfterSegment) + std::u16string(u"abc"), u"Extra data found at end of segment: abc"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.got, c.want);
}

TEST(ValidationErrorNumbersTest, DefaultSeverities) {
  for (int32_t number = verr::kFirst; number <= verr::kLast; ++number) {
    const bool offInFile = number >= 1043 && number <= 1050;
    const bool offInFreshList = number == 1043 || number == 1044 || number == 1046 || number == 1047;
    EXPECT_EQ(getDefaultSeverity(number), offInFile ? qxVESIgnore : qxVESError) << number;
    EXPECT_EQ(getInitialSeverity(number), offInFreshList ? qxVESIgnore : qxVESError) << number;
  }
}

// A set whose file carries no settings is topped up with the defaults of the number table.
TEST(ValidationErrorNumbersTest, LoadedSetToppedUpWithDefaults) {
  MessageFactory factory;
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(R"(
messageSets:
  - name: S
    segments: [{name: A, fields: [{name: F}]}]
    messages: [{name: M, items: [{segment: A}]}]
)"));
  const auto& settings = factory.getWarehouse().getMessageSets().at(0)->getValidationErrorSettings();
  ASSERT_EQ(settings.size(), static_cast<size_t>(verr::kCount));
  for (const auto& setting : settings)
    EXPECT_EQ(setting.getErrorType(), getDefaultSeverity(setting.getErrorNumber())) << setting.getErrorNumber();
}

TEST(ValidationErrorNumbersTest, IsReported) {
  EXPECT_TRUE(isReported(qxVESError, false));
  EXPECT_TRUE(isReported(qxVESError, true));
  EXPECT_FALSE(isReported(qxVESWarning, false));
  EXPECT_TRUE(isReported(qxVESWarning, true));
  EXPECT_FALSE(isReported(qxVESIgnore, true));
  EXPECT_FALSE(isReported(static_cast<EVErrType>(7), true));
}

}  // namespace
}  // namespace vantrelia
