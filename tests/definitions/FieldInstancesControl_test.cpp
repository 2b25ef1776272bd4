// Overrides of composite fields: the override block as each version carries it, the tree that
// applying it builds, and the look-ups that fall back level by level to the field definitions.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/FieldInstance.h"
#include "definitions/FieldInstances.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/UpdateCompositeFieldInstances.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "support/DefinitionBytes.h"
#include "support/DefinitionRecords.h"
#include "support/DefinitionSetup.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using Path = std::vector<int32_t>;
using testing::invalidFileMessage;

constexpr int kVersion = 883;

// Reads an override block and checks that exactly its bytes were read.
std::vector<FieldInstanceUpdate> readBlock(const PcfWriter& block, int version) {
  UpdateCompositeFieldInstances update;
  testing::readExactly(block.bytes(), [&](DefinitionFile& file) { update.load(file, version); });
  return update.getRecords();
}

TEST(FieldInstancesControlTest, OverrideBlockByVersion) {
  // records: index and flags
  struct Case {
    int version; PcfWriter block; std::vector<std::pair<int32_t, uint16_t>> records; std::u16string defaultValue;
    uint8_t required, hidden; int32_t minLength, maxLength;
  } cases[] = {
      // No header; a nested body is its bool alone; flags are a byte and name no Required.
      {800,
       std::move(PcfWriter().i32(0).boolean(false).byte(0x0F).textv(u"d", 800).textv(u"f", 800).text8("T")
                     .i32(1).boolean(true).i32(-2).i32(-1)),
       {{0, 0x0F}, {1, 0}, {-2, 0}}, u"d", 0, 0, 0, 0},
      // A header with flags 0 is dropped; Required is read, Hidden not yet.
      {801, std::move(PcfWriter().byte(0).i32(0).boolean(false).byte(0x18).boolean(true).i32(-1)), {{0, 0x18}}, u"", 1, 0, 0, 0},
      {803, std::move(PcfWriter().byte(0x10).boolean(true).i32(0).boolean(false).byte(0x18).boolean(true).boolean(true).i32(-1)),
       {{-3, 0x10}, {0, 0x18}}, u"", 1, 1, 0, 0},
      // The situational flag of a body is only refused from 868.
      {867, std::move(PcfWriter().byte(0x20).i32(2).boolean(false).byte(0x21).text16(u"\u0141").i32(-1)),
       {{-3, 0x20}, {2, 0x21}}, u"\u0141", 0, 0, 0, 0},
      // Advanced validation on a nested body passes.
      {868, std::move(PcfWriter().byte(0).i32(1).boolean(true).byte(0x40).i32(-2).i32(-1)), {{1, 0x40}, {-2, 0}}, u"", 0, 0, 0, 0},
      // Wide flags and lengths, for the header and for a nested body.
      {871,
       std::move(PcfWriter().u16(0x0188).boolean(true).i32(3).i32(9).i32(1).boolean(true).u16(0x0180).i32(4).i32(8).i32(-1)),
       {{-3, 0x0188}, {1, 0x0180}}, u"", 0, 0, 4, 8},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.version);
    const auto records = readBlock(c.block, c.version);
    ASSERT_EQ(records.size(), c.records.size());
    for (size_t i = 0; i < records.size(); ++i) {
      EXPECT_EQ(records[i].index, c.records[i].first) << i;
      EXPECT_EQ(records[i].values.flags, c.records[i].second) << i;
    }
    const FieldOverrideValues& last = records.back().index == -2 ? records.front().values : records.back().values;
    EXPECT_EQ(last.DefaultValue.str(), c.defaultValue);
    EXPECT_EQ(last.Required, c.required);
    EXPECT_EQ(last.Hidden, c.hidden);
    EXPECT_EQ(last.MinLength, c.minLength);
    EXPECT_EQ(last.MaxLength, c.maxLength);
  }
  const auto header = readBlock(PcfWriter().u16(0x0188).boolean(false).i32(3).i32(9).i32(-1), 871);
  EXPECT_EQ(header.at(0).values.MinLength, 3);
  EXPECT_EQ(header.at(0).values.MaxLength, 9);
}

TEST(FieldInstancesControlTest, ValidationFlagsRefusedFrom868) {
  const std::string situational = "Fields instances on composites do not support situational fields";
  const std::string advanced = "Fields instances on composites do not support advanced validation";
  const std::pair<PcfWriter, std::string> cases[] = {
      {std::move(PcfWriter().byte(0x20).i32(-1)), situational},
      {std::move(PcfWriter().byte(0).i32(0).boolean(false).byte(0x20).i32(-1)), situational},
      {std::move(PcfWriter().byte(0).i32(1).boolean(true).byte(0x20).i32(-2).i32(-1)), situational},
      {std::move(PcfWriter().byte(0).i32(0).boolean(false).byte(0x40).i32(-1)), advanced},
  };
  for (const auto& [block, failure] : cases) EXPECT_EQ(invalidFileMessage([&] { readBlock(block, 868); }), failure);
}

// A field record: primitive of a type with a default, or a composite field with an override block.
PcfWriter field(const std::string& name, int32_t dataType, std::u16string defaultValue = u"") {
  return testing::FieldRecord{.name = name, .minLength = 1, .defaultValue = defaultValue, .dataType = dataType}.write(kVersion);
}

PcfWriter compositeField(const std::string& name, int32_t compositeId, const PcfWriter& block, std::u16string defaultValue = u"") {
  return testing::FieldRecord{.name = name, .defaultValue = defaultValue, .compositeId = compositeId, .overrides = block.bytes()}.write(kVersion);
}

PcfWriter composite(const std::string& name, int32_t id, const std::vector<PcfWriter>& fields) {
  PcfWriter w;
  w.text8(name).text8w(u"").i32(16).boolean(false).i32(id).i32(static_cast<int32_t>(fields.size()));
  for (const auto& f : fields) w.raw(f.bytes());
  return w.boolean(false).count(0).count(0).i32(0).boolean(false);
}

const PcfWriter kEmptyBlock = std::move(PcfWriter().u16(0).i32(-1));

// HOLDER: O, a field of composite OUTER with the given block.
// OUTER: A (string, default "a"), MID (composite), B (of type bType); MID: X (strict integer),
// DEEP (composite, default "deep"), Y; DEEP: Z (of type zType).
std::unique_ptr<MessageSetDefn> loadSet(const PcfWriter& block, int32_t bType = 1, int32_t zType = 4) {
  auto set = testing::DefinitionSetup::messageSet("SET");
  auto codes = std::make_unique<ValidationTableDefn>();
  testing::readExactly(PcfWriter().text8("Codes").i32(0).bytes(), [&](DefinitionFile& file) { codes->load(file, kVersion, false); });
  testing::DefinitionSetup::addValidationTable(*set, std::move(codes));
  PcfWriter all;
  all.raw(composite("HOLDER", 4, {compositeField("O", 1, block)}).bytes());
  all.raw(composite("OUTER", 1, {field("A", 4, u"a"), compositeField("MID", 2, kEmptyBlock), field("B", bType, u"#L")}).bytes());
  all.raw(composite("MID", 2, {field("X", 12), compositeField("DEEP", 3, kEmptyBlock, u"deep"), field("Y", 4)}).bytes());
  all.raw(composite("DEEP", 3, {field("Z", zType)}).bytes());
  testing::loadComposites(*set, all.bytes(), 4, kVersion);
  return set;
}

std::string applyFailure(const PcfWriter& block, int32_t bType = 1) {
  return invalidFileMessage([&] { loadSet(block, bType); });
}

const CompositeFieldInstancesControl& controlOfO(const MessageSetDefn& set) {
  return *set.findCompositeByName("HOLDER")->getField(0).getInstancesControl();
}

// A: required, default "d". MID: required, and inside it X a count "#5#M", DEEP (no flags) with
// Z hidden, closed; Y a format without "@"; MID closed. B: a pattern format "@99".
PcfWriter nestedBlock() {
  PcfWriter w;
  w.u16(0x0008).boolean(true);  // the field as a whole: no effect
  w.i32(0).boolean(false).u16(0x0009).text16(u"d").boolean(true);
  w.i32(1).boolean(true).u16(0x0008).boolean(true);
  w.i32(0).boolean(false).u16(0x0001).text16(u"#5#M");
  w.i32(1).boolean(true).u16(0);
  w.i32(0).boolean(false).u16(0x0010).boolean(true);
  w.i32(-2);
  w.i32(2).boolean(false).u16(0x0002).text16(u"99");
  w.i32(-2);
  w.i32(2).boolean(false).u16(0x0002).text16(u"@99");
  return w.i32(-1);
}

TEST(FieldInstancesControlTest, AppliedTreeAndItsLookUps) {
  const auto set = loadSet(nestedBlock());
  const auto& control = controlOfO(*set);
  EXPECT_EQ(control.getCount(), 3);

  // -2 closes one level: Y lands in MID, B in OUTER.
  const auto* mid = dynamic_cast<const FieldInstances*>(control.getEntry(1));
  ASSERT_NE(mid, nullptr);
  EXPECT_EQ(mid->getChildCount(), 3);
  EXPECT_NE(mid->getChild(2), nullptr);
  EXPECT_NE(control.getEntry(2), nullptr);
  const auto* deep = dynamic_cast<const FieldInstances*>(mid->getChild(1));
  ASSERT_NE(deep, nullptr);
  EXPECT_EQ(deep->getFlags(), 0);

  EXPECT_TRUE(control.isRequired(Path{0}));
  EXPECT_EQ(control.getDefaultValue(Path{0}).str(), u"d");
  EXPECT_TRUE(control.isRequired(Path{1}));
  // A count in an override: kind, path and the flag that says so.
  EXPECT_EQ(control.getCountKind(Path{1, 0}), 4);
  EXPECT_EQ(control.getDefaultValue(Path{1, 0}).str(), u"5");
  EXPECT_EQ(mid->getChild(0)->getFlags(), 0x0201);
  EXPECT_TRUE(control.isHidden(Path{1, 1, 0}));
  // No entry of its own: DEEP is as its definition says, with its default.
  EXPECT_FALSE(control.isHidden(Path{1, 1}));
  EXPECT_EQ(control.getDefaultValue(Path{1, 1}).str(), u"deep");
  // A path that ends at a composite field has no default in the tree.
  EXPECT_EQ(control.getDefaultValue(Path{1}).str(), u"");
  // "99" takes the formatter away: the answer is null under the flag, and no fall-back.
  const FieldInstancesBase* y = mid->getChild(2);
  int marker = 0;
  Formatter* formatter = reinterpret_cast<Formatter*>(&marker);
  EXPECT_TRUE(y->getFormatter({}, formatter));
  EXPECT_EQ(formatter, nullptr);
  EXPECT_EQ(control.getFormatter(Path{1, 2}), nullptr);
  // "@99" gives a default too: an empty one, although the file didn't set its flag.
  EXPECT_EQ(control.getEntry(2)->getFlags(), 0x0003);
  const auto* b = dynamic_cast<const FieldInstance*>(control.getEntry(2));
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->getFormat().str(), u"99");
  EXPECT_NE(b->getFormatterObject(), nullptr);
  EXPECT_EQ(control.getDefaultValue(Path{2}).str(), u"");
  // Without an entry, the definition: B's own default is its counted path "L".
  EXPECT_EQ(controlOfO(*loadSet(kEmptyBlock)).getDefaultValue(Path{2}).str(), u"L");

  // The index forms: field `index` of the composite the path reaches.
  EXPECT_EQ(control.getDefaultValue(Path{1}, 0).str(), u"5");
  EXPECT_EQ(control.getDefaultValue(Path{1, 1}, 0).str(), u"");
  EXPECT_FALSE(control.isRequired(Path{1, 1}, 0));
  EXPECT_EQ(control.getDefaultValue(0).str(), u"d");
  EXPECT_EQ(control.getDefaultValue(1).str(), u"");
  EXPECT_TRUE(control.isRequired(1));
  EXPECT_THROW(control.isRequired(Path{}), BadParameter);
  // Through a primitive field's entry its own default answers; without one the path is wrong.
  EXPECT_EQ(control.getDefaultValue(Path{0}, 0).str(), u"d");
  EXPECT_THROW(controlOfO(*loadSet(kEmptyBlock)).getDefaultValue(Path{0}, 0), BadParameter);
}

TEST(FieldInstancesControlTest, OuterControlWinsThenCompositeFieldThenDefinition) {
  const auto set = loadSet(nestedBlock(), 1, 11);
  // A control over HOLDER plays the part of a message item's: its path starts at O.
  CompositeFieldInstancesControl item(*set->findCompositeByName("HOLDER"));
  EXPECT_TRUE(item.isRequired(Path{0, 0}));      // from O's own overrides
  EXPECT_FALSE(item.isRequired(Path{0, 2}));     // B: O's entry gives no Required, the definition does
  EXPECT_TRUE(item.isHidden(Path{0, 1, 1, 0}));  // three levels down into O's tree
  FieldOverrideValues notRequired;
  notRequired.flags = 0x0008;
  item.add(Path{0, 0}, notRequired);
  EXPECT_FALSE(item.isRequired(Path{0, 0}));
  EXPECT_TRUE(item.isRequired(Path{0, 1}));  // the entry made on the way has no flags: O's tree answers
  EXPECT_EQ(item.getDefaultValue(Path{0, 0}).str(), u"d");

  EXPECT_TRUE(item.hasVariableField(Path{0, 1, 1, 0}));
  EXPECT_FALSE(item.hasVariableField(Path{0, 1, 1}));
  EXPECT_FALSE(item.hasVariableField(Path{0, 0, 5}));  // stops at a primitive field
  EXPECT_EQ(item.getComposite(0).getName().str(), "OUTER");
}

TEST(FieldInstancesControlTest, AddKeepsRulesOnlyUnderTheirFlags) {
  const auto set = loadSet(kEmptyBlock);
  CompositeFieldInstancesControl control(*set->findCompositeByName("OUTER"));
  int marker = 0;
  bool dropped = false;
  const auto rule = [&] {
    dropped = false;
    return std::shared_ptr<RuleOrList>(reinterpret_cast<RuleOrList*>(&marker), [&](RuleOrList*) { dropped = true; });
  };
  FieldOverrideValues values;
  values.flags = 0x0008;
  control.add(Path{0}, values, rule());
  EXPECT_TRUE(dropped);
  EXPECT_EQ(control.getSituationalRule(Path{0}), nullptr);

  values.flags = 0x0028;
  control.add(Path{1, 1}, values, rule());
  EXPECT_FALSE(dropped);
  EXPECT_EQ(control.getSituationalRule(Path{1, 1}), reinterpret_cast<RuleOrList*>(&marker));
  EXPECT_EQ(control.getSituationalRule(Path{1, 1, 0}), nullptr);  // a rule belongs to its own field
  EXPECT_EQ(control.getAdvancedValidation(Path{1, 1}), nullptr);
  control.add(Path{1, 1}, values);  // a later entry at the same place replaces the earlier
  EXPECT_TRUE(dropped);

  // A path can't go on below a primitive field; the holder's field count bounds the first index.
  EXPECT_THROW(control.add(Path{0, 0}, values), BadParameter);
  EXPECT_THROW(control.add(Path{3}, values), BadParameter);
  try {
    control.getComposite(0);
    ADD_FAILURE() << "a primitive field gave a composite";
  } catch (const BadParameter& e) {
    EXPECT_EQ(e.message, "Internal error");
  }
  // Only the entry of a composite field has children.
  FieldInstance primitive(control.getFieldDefn(0), values, nullptr, nullptr);
  try {
    primitive.addEntry(control.getCompositeDefn(), Path{0}, values, nullptr, nullptr);
    ADD_FAILURE() << "a primitive field's entry took a child";
  } catch (const IllegalOperation& e) {
    EXPECT_EQ(e.message, "Internal error");
  }
}

TEST(FieldInstancesControlTest, ApplyFailures) {
  const auto record = [](int32_t index, uint16_t flags, std::u16string text = u"") {
    PcfWriter w;
    w.u16(0).i32(index).boolean(false).u16(flags);
    if (flags & 0x0001) w.text16(text);
    if (flags & 0x0004) w.text8(std::string(text.begin(), text.end()));
    return w.i32(-1);
  };
  struct Case { const char* what; PcfWriter block; int32_t bType; std::string failure; } cases[] = {
      {"no flags", record(0, 0), 1, "Invalid flags for field instance"},
      {"count item", record(2, 0x0001, u"#12#x"), 1, "Invalid count item specified"},
      {"empty count item", record(2, 0x0001, u"#12#"), 12, "Invalid count item specified"},
      {"length field of raw binary", record(2, 0x0001, u"#LEN"), 5,
       "The associated length field of a raw binary field may not be overridden"},
      {"other default of raw binary", record(2, 0x0001, u"x"), 5, "No length field specified for raw binary field"},
      {"empty default of raw binary", record(2, 0x0001, u""), 5, "No length field specified for raw binary field"},
      {"string default with #", record(2, 0x0001, u"#12#x"), 4, ""},
      {"known table", record(0, 0x0004, u"Codes"), 1, ""},
      {"unknown table", record(0, 0x0004, u"Nope"), 1, std::string(messages::kUnknownValidationTable) + "Nope"},
      {"empty table name takes the table away", record(0, 0x0004, u""), 1, ""},
      {"index outside", record(3, 0x0001, u"x"), 1, messages::kOverrideIndexOutside},
      {"negative index", record(-4, 0x0001, u"x"), 1, messages::kOverrideIndexOutside},
      {"closing what isn't open", std::move(PcfWriter().u16(0).i32(-2).i32(-1)), 1, messages::kOverrideLevelNotOpen},
      {"nothing but the end", std::move(PcfWriter().u16(0).i32(-1)), 1, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(applyFailure(c.block, c.bType), c.failure);
  }
  // Right at the end: a control whose entries are all null.
  const auto set = loadSet(kEmptyBlock);
  const auto& control = controlOfO(*set);
  for (int32_t i = 0; i < control.getCount(); ++i) EXPECT_EQ(control.getEntry(i), nullptr);
}

}  // namespace
}  // namespace vantrelia
