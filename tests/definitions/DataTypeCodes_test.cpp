// The name tables of data types, separators and alignments that the compiler reads and the
// inspector prints: each name stands for one value, and the values agree with the enumerations
// and the codes of the file.

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/SeparatorDefn.h"
#include "foundation/Enumerations.h"

namespace vantrelia {
namespace {

struct Table {
  const char* what;
  int count;
  std::function<std::string_view(int)> nameOf;
  std::function<int(std::string_view)> valueOf;
};

TEST(DataTypeCodesTest, EveryNameStandsForOneValueAndBack) {
  const Table tables[] = {
      {"data types", DataTypeCodes::kCount, DataTypeCodes::nameOf, DataTypeCodes::codeOf},
      {"separators", kSeparatorCount, SeparatorDefn::nameOf, SeparatorDefn::typeOf},
      {"alignments", 8, FieldDefn::alignmentName, FieldDefn::alignmentOf},
  };
  for (const Table& table : tables) {
    std::set<std::string_view> seen;
    for (int value = 0; value < table.count; ++value) {
      const std::string_view name = table.nameOf(value);
      EXPECT_FALSE(name.empty()) << table.what << " " << value;
      EXPECT_TRUE(seen.insert(name).second) << table.what << ": '" << name << "' names two values";
      EXPECT_EQ(table.valueOf(name), value) << table.what << " '" << name << "'";
    }
    for (const int outside : {-1, table.count}) EXPECT_EQ(table.nameOf(outside), "") << table.what << " " << outside;
    for (const char* unknown : {"", "Short", "nothing"}) EXPECT_EQ(table.valueOf(unknown), -1) << table.what << " " << unknown;
  }
}

TEST(DataTypeCodesTest, NamesMatchTheirEnumerations) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {DataTypeCodes::nameOf(DataTypeCodes::kRawBinary), "binary"},
      {DataTypeCodes::nameOf(DataTypeCodes::kVariable), "variable"},
      {DataTypeCodes::nameOf(DataTypeCodes::kQuotedText), "quoted"},
      {SeparatorDefn::nameOf(qxSepField1), "field1"},
      {SeparatorDefn::nameOf(qxSepUser5), "user5"},
      {SeparatorDefn::nameOf(qxSepCrlf), "crlf"},
      {FieldDefn::alignmentName(qxRightMin), "rightMin"},
      {FieldDefn::alignmentName(qxZeroMax), "zeroMax"},
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(name, expected);
}

TEST(DataTypeCodesTest, KindsOfType) {
  struct Case {
    int32_t code;
    bool basic, countBase, binary, numeric;
  } cases[] = {
      {DataTypeCodes::kShort, true, true, false, true},
      {DataTypeCodes::kDouble, true, false, false, true},
      {DataTypeCodes::kString, true, false, false, false},
      {DataTypeCodes::kRawBinary, true, false, true, false},
      {DataTypeCodes::kHex, true, false, true, false},
      {DataTypeCodes::kCustom, false, false, false, false},
      {DataTypeCodes::kArray, false, false, false, false},
      {DataTypeCodes::kVariable, false, false, false, false},
      {DataTypeCodes::kStrictInteger, true, true, false, true},
      {DataTypeCodes::kStrictReal, true, false, false, true},
      {DataTypeCodes::kQuotedText, true, false, false, false},
      {DataTypeCodes::kCount, false, false, false, false},
      {-1, false, false, false, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DataTypeCodes::isBasic(c.code), c.basic) << c.code;
    EXPECT_EQ(DataTypeCodes::isCountBase(c.code), c.countBase) << c.code;
    EXPECT_EQ(DataTypeCodes::isBinary(c.code), c.binary) << c.code;
    EXPECT_EQ(DataTypeCodes::isNumeric(c.code), c.numeric) << c.code;
  }
}

}  // namespace
}  // namespace vantrelia
