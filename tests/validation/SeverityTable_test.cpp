// The severities a tree sees: a fresh table, a set's records by position, and inheritance.

#include <gtest/gtest.h>

#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"
#include "validation/SeverityTable.h"

namespace vantrelia {
namespace {

TEST(SeverityTableTest, FreshTableStartsWithInitialSeverities) {
  const SeverityTable table;
  for (int32_t number = verr::kFirst; number <= verr::kLast; ++number)
    EXPECT_EQ(table.get(number), getInitialSeverity(number)) << number;
}

TEST(SeverityTableTest, RecordsApplyByPositionNotByNumber) {
  // Ten records that carry odd numbers: they still set 1001 to 1010, and the rest stay.
  std::vector<ValidationErrorSettingDefn> settings;
  for (int32_t i = 0; i < 10; ++i) settings.emplace_back(2000 + i, i == 2 ? qxVESWarning : qxVESIgnore);
  SeverityTable table;
  table.loadFrom(settings);
  EXPECT_EQ(table.get(1001), qxVESIgnore);
  EXPECT_EQ(table.get(1003), qxVESWarning);
  EXPECT_EQ(table.get(1010), qxVESIgnore);
  EXPECT_EQ(table.get(1011), qxVESError);
  EXPECT_EQ(table.get(1043), qxVESIgnore);
}

TEST(SeverityTableTest, SetWritesWhatItIsGivenAndReportsFollow) {
  SeverityTable table;
  table.set(1005, qxVESWarning);
  EXPECT_TRUE(table.reports(1005, true));
  EXPECT_FALSE(table.reports(1005, false));
  table.set(1005, static_cast<EVErrType>(7));
  EXPECT_EQ(static_cast<int>(table.get(1005)), 7);
  EXPECT_FALSE(table.reports(1005, true));
  EXPECT_TRUE(table.reports(1052, false));
}

TEST(SeverityTableTest, InheritingSetCopiesTheParentList) {
  MessageFactory factory;
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(R"(
messageSets:
  - name: OWN
    validationErrorSettings: {1001: warning}
    segments: [{name: A, fields: [{name: F}]}]
    messages: [{name: M, items: [{segment: A}]}]
  - name: HEIR
    initializeValidationErrorSettingsFromParent: true
    validationErrorSettings: {1001: ignore}
    segments: [{name: A, fields: [{name: F}]}]
    messages: [{name: M, items: [{segment: A}]}]
)"));
  const auto& sets = factory.getWarehouse().getMessageSets();
  const MessageSetDefn& own = *sets.at(0);
  const MessageSetDefn& heir = *sets.at(1);

  SeverityTable parent;
  parent.set(1002, qxVESWarning);
  parent.set(1046, qxVESError);

  SeverityTable ownTable;
  ownTable.reload(own, &parent);
  EXPECT_EQ(ownTable.get(1001), qxVESWarning) << "a set that doesn't inherit keeps its records";
  EXPECT_EQ(ownTable.get(1002), qxVESError);

  SeverityTable heirTable;
  heirTable.reload(heir, &parent);
  EXPECT_EQ(heirTable, parent);

  SeverityTable orphan;
  orphan.reload(heir, nullptr);
  EXPECT_EQ(orphan.get(1001), qxVESIgnore) << "without a parent list the set's own records apply";
  EXPECT_EQ(orphan.get(1046), qxVESIgnore);
  EXPECT_EQ(orphan.get(1050), qxVESIgnore);
}

}  // namespace
}  // namespace vantrelia
