// Validation tables, their entries and the error settings, read from bytes laid out by hand.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/ValidationErrorSettingDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "support/DefinitionBytes.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;

// Loads a table from the bytes and checks that exactly they were read.
ValidationTableDefn loadTable(const PcfWriter& record, int version, bool hasDescriptions) {
  ValidationTableDefn table;
  testing::readExactly(record.bytes(), [&](DefinitionFile& file) { table.load(file, version, hasDescriptions); });
  return table;
}

TEST(ValidationTableDefnTest, EntryFormsByVersionAndDescriptionFlag) {
  // entries: "M" and one more
  struct Case {
    const char* what; int version; bool hasDescriptions; PcfWriter entries; std::u16string second, description;
  } cases[] = {
      {"byte texts before 832 widen by sign", 831, false, std::move(PcfWriter().text8w(u"M").text8("\xE9")), u"\uFFE9", u""},
      {"16-bit texts from 832", 832, false, std::move(PcfWriter().text16(u"M").text16(u"\u0141")), u"\u0141", u""},
      {"881 with the flag", 881, true, std::move(PcfWriter().text16(u"M").text16(u"Male").text16(u"F").text16(u"")), u"F", u"Male"},
      {"881 without the flag: one text an entry", 881, false, std::move(PcfWriter().text16(u"M").text16(u"F")), u"F", u""},
      {"880 ignores the flag", 880, true, std::move(PcfWriter().text16(u"M").text16(u"F")), u"F", u""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto table = loadTable(PcfWriter().text8("Sex").i32(2).raw(c.entries.bytes()), c.version, c.hasDescriptions);
    EXPECT_EQ(table.getName(), "Sex");
    ASSERT_EQ(table.getEntryCount(), 2);
    EXPECT_EQ(table.getEntry(0).getDescription().str(), c.description);
    EXPECT_EQ(table.getEntry(1).getValue().str(), c.second);
  }
}

TEST(ValidationTableDefnTest, ContainsComparesWholeValuesUnitByUnit) {
  const auto table = loadTable(PcfWriter().text8("T").i32(4).text16(u"a").text16(u"abc").text16(u"").text16(u"\u00E9"), 883, false);
  const std::pair<std::u16string, bool> cases[] = {{u"ab", false}, {u"a", true},  {u"abc", true},     {u"A", false},
                                                   {u"abcd", false}, {u"", true}, {u"\u00E9", true}, {u"\uFFE9", false}};
  for (const auto& [value, found] : cases) EXPECT_EQ(table.contains(value), found) << value.size();
  const auto empty = loadTable(PcfWriter().text8("Empty").i32(0), 883, true);
  EXPECT_FALSE(empty.contains(u""));
}

TEST(ValidationErrorSettingDefnTest, SeveritiesAboveWarningFailTheLoad) {
  for (const uint8_t severity : {0, 1, 2, 3, 255}) {
    SCOPED_TRACE(int(severity));
    ValidationErrorSettingDefn setting;
    const std::string failure = testing::invalidFileMessage(
        [&] { testing::readExactly(PcfWriter().i32(1043).byte(severity).bytes(), [&](DefinitionFile& file) { setting.load(file); }); });
    EXPECT_EQ(failure, severity > 2 ? "Validation error type unknown" : "");
    if (severity <= 2) {
      EXPECT_EQ(setting.getErrorNumber(), 1043);
      EXPECT_EQ(setting.getErrorType(), static_cast<EVErrType>(severity));
    }
  }
}

}  // namespace
}  // namespace vantrelia
