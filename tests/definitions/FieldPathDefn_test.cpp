// Field paths: when a path is numeric, what its name and indexes are, and how it is shown.

#include <gtest/gtest.h>

#include <climits>

#include "definitions/FieldPathDefn.h"

namespace vantrelia {
namespace {

TEST(FieldPathDefnTest, NumericOnlyWhenDigitsAndSlashesFollowTheFirstSlash) {
  const struct {
    const char* text; bool dotted; bool numeric; const char* name; std::vector<int32_t> indexes; const char* shown;
  } cases[] = {
      {"S/9/1", false, true, "S", {9, 1}, "S.9.1"},
      {"S/NAME/1", false, false, "S/NAME/1", {}, "S/NAME/1"},
      {"S", false, false, "S", {}, "S"},
      {"S/", false, false, "S/", {}, "S/"},
      {"S/9/", false, true, "S", {9}, "S.9"},  // a trailing "/" adds no index
      {"S//9", false, true, "S", {9}, "S.9"},
      {"S/007/0", false, true, "S", {7, 0}, "S.7.0"},
      {"/9", false, true, "", {9}, ".9"},
      {"S/9a", false, false, "S/9a", {}, "S/9a"},
      {"S/-1", false, false, "S/-1", {}, "S/-1"},
      {"S/99999999999", false, true, "S", {INT32_MAX}, "S.2147483647"},
      {"", false, false, "", {}, ""},
      {"S.9.1", true, true, "S", {9, 1}, "S.9.1"},
      {"MSH.MessageType.1", true, false, "MSH/MessageType/1", {}, "MSH/MessageType/1"},
      {"S.", true, false, "S/", {}, "S/"},
  };
  for (const auto& c : cases) {
    const FieldPathDefn path = c.dotted ? FieldPathDefn::parseDotted(c.text) : FieldPathDefn::parse(c.text);
    EXPECT_EQ(path.isNumeric(), c.numeric) << c.text;
    EXPECT_EQ(path.getName().str(), c.name) << c.text;
    EXPECT_EQ(path.getIndexes(), c.indexes) << c.text;
    EXPECT_EQ(path.text(), c.shown) << c.text;
  }
}

}  // namespace
}  // namespace vantrelia
