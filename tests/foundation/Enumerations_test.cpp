#include "foundation/Enumerations.h"

#include <gtest/gtest.h>

namespace {

using namespace vantrelia;

// Hosts and definition files use these numbers directly; a few that are easy to get wrong by one.
TEST(Enumerations, KeyValuesMatchTheHostInterface) {
  struct Case {
    const char* name;
    int value;
    int expected;
  };
  const Case cases[] = {
      {"qxVESError", qxVESError, 0},
      {"qxVESIgnore", qxVESIgnore, 1},
      {"qxVESWarning", qxVESWarning, 2},
      {"qxSepField1", qxSepField1, 5},
      {"qxSepCrlf", qxSepCrlf, 21},
      {"kSeparatorCount", kSeparatorCount, 22},
      {"qxMessageSet", qxMessageSet, 3},
      {"qxVariable", qxVariable, 8},
      {"qxExclusive", qxExclusive, 4},
      {"qxSyntaxRulesSetRequiredFlagOnOutput", qxSyntaxRulesSetRequiredFlagOnOutput, 2},
  };
  for (const Case& c : cases) EXPECT_EQ(c.value, c.expected) << c.name;
}

}  // namespace
