// Composite records read from bytes laid out by hand, the set's fix-up of composite fields, and
// the walks over composites: required marks and the quoted-text flag.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "support/DefinitionBytes.h"
#include "support/DefinitionRecords.h"
#include "support/DefinitionSetup.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using testing::invalidFileMessage;

struct CompositeBytes {
  explicit CompositeBytes(std::string compositeName = "C", int32_t compositeId = 1)
      : name(std::move(compositeName)), id(compositeId) {}

  std::string name;
  int32_t id;
  std::vector<testing::FieldRecord> fields;  // written in the layout of the record's version
  bool syntaxRules = false;
  int32_t equations = 0;
  uint32_t flags = 0;
  bool indicator = false;

  PcfWriter write(int version) const {
    PcfWriter w;
    w.text8(name).text8w(u"&").i32(17).boolean(true).i32(id).i32(static_cast<int32_t>(fields.size()));
    for (const auto& field : fields) w.raw(field.write(version).bytes());
    if (version >= 848) w.boolean(syntaxRules);
    if (version >= 852) w.count(equations);
    if (version >= 855) w.count(1).count(0).text16(u"note");
    if (version >= 857) w.i32(static_cast<int32_t>(flags));
    if (version >= 865) {
      w.boolean(indicator);
      if (indicator) w.i32(qxSepUser1).text16(u"\u00A7");
    }
    return w;
  }
};

// Reads the records in order, then lets the set fix up the composite fields.
void loadInto(MessageSetDefn& set, const std::vector<CompositeBytes>& records, int version) {
  PcfWriter all;
  for (const auto& record : records) all.raw(record.write(version).bytes());
  testing::loadComposites(set, all.bytes(), records.size(), version);
}

std::string compositeLoadFailure(const std::vector<CompositeBytes>& records, int version) {
  const auto set = testing::DefinitionSetup::messageSet("SET");
  return invalidFileMessage([&] { loadInto(*set, records, version); });
}

TEST(CompositeDefnTest, RecordByVersion) {
  struct Case { int version; uint32_t flags; bool userData; ECompositeType type; } cases[] = {
      // Between the syntax rules and the flag word the variable field sets 0x01 by itself; the
      // flag word replaces it, whatever the fields are.
      {847, 0x00, false, qxCompTypeNormal}, {848, 0x01, false, qxCompTypeNormal}, {850, 0x01, false, qxCompTypeNormal},
      {856, 0x01, true, qxCompTypeNormal},  {857, 0x20, true, qxCompTypeNormal},  {864, 0x20, true, qxCompTypeNormal},
      {865, 0x20, true, qxCompTypeFieldPresenceIndicator}, {883, 0x20, true, qxCompTypeFieldPresenceIndicator},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.version);
    CompositeBytes record;
    record.fields = {{.name = "A"}, {.name = "V", .dataType = 11}};
    record.flags = 0x20;
    record.indicator = true;
    const auto set = testing::DefinitionSetup::messageSet("SET");
    loadInto(*set, {record}, c.version);
    const CompositeDefn& composite = *set->getComposites().at(0);
    EXPECT_EQ(composite.getName().str(), "C");
    EXPECT_EQ(composite.getSpecialSeparatorString().str(), u"&");
    EXPECT_EQ(composite.getSeparatorType(), qxSepString);
    EXPECT_TRUE(composite.isFixedWidth());
    ASSERT_EQ(composite.getFieldCount(), 2);
    EXPECT_EQ(composite.getField(1).getName().str(), "V");
    EXPECT_EQ(composite.getFlags(), c.flags);
    EXPECT_EQ(composite.getUserData().size(), c.userData ? 1u : 0u);
    EXPECT_EQ(composite.getCompositeType(), c.type);
    EXPECT_EQ(composite.getSpecialSeparatorType(), c.type ? qxSepUser1 : qxSepString);
    EXPECT_EQ(composite.getIndicatorSeparatorString().str(), c.type ? u"\u00A7" : u"");
    EXPECT_FALSE(composite.hasEquations());
    EXPECT_EQ(composite.getEquation(0), nullptr);
    EXPECT_EQ(composite.getSyntaxRules(), nullptr);
  }
  // A normal composite reads neither the indicator's separator nor its text.
  const auto set = testing::DefinitionSetup::messageSet("SET");
  loadInto(*set, {CompositeBytes()}, 883);
  EXPECT_EQ(set->getComposites().at(0)->getCompositeType(), qxCompTypeNormal);
}

TEST(CompositeDefnTest, RefusedRecords) {
  struct Case { const char* what; bool syntaxRules; int32_t equations; int version; std::string failure; } cases[] = {
      {"syntax rules", true, 0, 848, "Syntax rules are not supported yet"},
      {"more equations than fields", false, 3, 852, "Too many validation equations"},
      {"equations", false, 2, 883, "Validation equations are not supported yet"},
      {"equations before they exist are not read", false, 3, 851, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CompositeBytes record;
    record.fields = {{.name = "A"}, {.name = "B"}};
    record.syntaxRules = c.syntaxRules;
    record.equations = c.equations;
    EXPECT_EQ(compositeLoadFailure({record}, c.version), c.failure);
  }

  const auto negative = PcfWriter().text8("C").text8w(u"").i32(16).boolean(false).i32(1).i32(-1).take();
  const auto set = testing::DefinitionSetup::messageSet("SET");
  EXPECT_EQ(invalidFileMessage([&] { testing::loadComposites(*set, negative, 1, 883); }), messages::kInvalidFieldCount);
}

TEST(CompositeDefnTest, SetPointsCompositeFieldsAtLaterComposites) {
  CompositeBytes outer("OUTER", 7);
  outer.fields = {{.name = "A"}, {.name = "IN", .compositeId = 9}};
  CompositeBytes inner("INNER", 9);
  inner.fields = {{.name = "X"}};
  CompositeBytes shadow("SHADOW", 9);  // a second composite with the id: the first is found
  const auto set = testing::DefinitionSetup::messageSet("SET");
  loadInto(*set, {outer, inner, shadow}, 883);
  const FieldDefn& field = set->getComposites()[0]->getField(1);
  EXPECT_EQ(field.getComposite(), set->getComposites()[1].get());
  EXPECT_EQ(set->findCompositeById(9), set->getComposites()[1].get());
  EXPECT_EQ(set->findCompositeByName("SHADOW"), set->getComposites()[2].get());
  EXPECT_EQ(set->findCompositeByName("shadow"), nullptr);
  EXPECT_EQ(set->findCompositeById(8), nullptr);
  // Every composite field gets a control, without entries when the block is empty.
  ASSERT_NE(field.getInstancesControl(), nullptr);
  EXPECT_EQ(field.getInstancesControl()->getEntry(0), nullptr);

  outer.fields[1].compositeId = 8;
  EXPECT_EQ(compositeLoadFailure({outer, inner}, 883), messages::kUnknownComposite);
}

// OUTER: A, MID (composite), B; MID: X, DEEP (composite), Y; DEEP: Z.
std::unique_ptr<MessageSetDefn> nestedSet(int32_t zType = 4) {
  CompositeBytes outer("OUTER", 1);
  outer.fields = {{.name = "A"}, {.name = "MID", .compositeId = 2}, {.name = "B"}};
  CompositeBytes mid("MID", 2);
  mid.fields = {{.name = "X"}, {.name = "DEEP", .compositeId = 3}, {.name = "Y"}};
  CompositeBytes deep("DEEP", 3);
  deep.fields = {{.name = "Z", .dataType = zType}};
  auto set = testing::DefinitionSetup::messageSet("SET");
  loadInto(*set, {outer, mid, deep}, 883);
  return set;
}

// OUTER, the first composite of a nested set, to change in place.
CompositeDefn& outerOf(const MessageSetDefn& set) { return *set.getComposites().front(); }

TEST(CompositeDefnTest, MarkRequiredPathWalksOneBasedIndexes) {
  struct Case { std::vector<int32_t> path; std::string composite, field, failure; } cases[] = {
      {{1}, "OUTER", "A", ""},
      {{2}, "OUTER", "MID", ""},
      {{2, 3}, "MID", "Y", ""},
      {{2, 2, 1}, "DEEP", "Z", ""},
      {{0}, "", "", "Invalid composite index in indexed message type field"},
      {{4}, "", "", "Invalid composite index in indexed message type field"},
      {{2, 4}, "", "", "Invalid composite index in indexed message type field"},
      {{1, 1}, "", "", "Expected a nested composite in indexed message type field"},
      {{2, 3, 1}, "", "", "Expected a nested composite in indexed message type field"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path.size());
    auto set = nestedSet();
    EXPECT_EQ(invalidFileMessage([&] { testing::DefinitionSetup::markRequiredPath(outerOf(*set), c.path); }), c.failure);
    if (!c.failure.empty()) continue;
    int marked = 0;
    for (const auto& composite : set->getComposites())
      for (const auto& field : composite->getFields())
        if (field->isRequired()) {
          ++marked;
          EXPECT_EQ(composite->getName().str(), c.composite);
          EXPECT_EQ(field->getName().str(), c.field);
        }
    EXPECT_EQ(marked, 1);
  }
}

TEST(CompositeDefnTest, MarkRequiredByNameIgnoresCaseAndStopsAtUnknownNames) {
  auto set = nestedSet();
  for (const char* path : {"mid/Deep/z", "B/", "NONE/X"}) testing::DefinitionSetup::markRequiredByName(outerOf(*set), path);
  std::vector<std::string> required;
  for (const auto& composite : set->getComposites())
    for (const auto& field : composite->getFields())
      if (field->isRequired()) required.push_back(field->getName().str());
  EXPECT_EQ(required, (std::vector<std::string>{"MID", "B", "DEEP", "Z"}));
}

TEST(CompositeDefnTest, QuotedTextFlagPassesUpThroughNestedComposites) {
  auto set = nestedSet(14);
  for (const auto& composite : set->getComposites()) testing::DefinitionSetup::workOutQuotedText(*composite);
  for (const auto& composite : set->getComposites())
    EXPECT_EQ(composite->getFlags() & CompositeDefn::kHoldsQuotedText, CompositeDefn::kHoldsQuotedText)
        << composite->getName().str();
  auto plain = nestedSet(4);
  testing::DefinitionSetup::workOutQuotedText(outerOf(*plain));
  EXPECT_EQ(plain->findCompositeByName("MID")->getFlags(), 0u);

  // A composite that holds itself doesn't send the walk round in circles.
  CompositeBytes self("SELF", 5);
  self.fields = {{.name = "ME", .compositeId = 5}, {.name = "Q", .dataType = 14}};
  const auto selfSet = testing::DefinitionSetup::messageSet("SET");
  loadInto(*selfSet, {self}, 883);
  testing::DefinitionSetup::workOutQuotedText(*selfSet->getComposites()[0]);
  EXPECT_EQ(selfSet->getComposites()[0]->getFlags(), CompositeDefn::kHoldsQuotedText);
}

}  // namespace
}  // namespace vantrelia
