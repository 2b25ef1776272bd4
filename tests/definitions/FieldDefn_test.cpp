// Field records read from bytes laid out by hand: what each version carries, and what the loader
// works out from it (special defaults, types and flags, the tag).

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/CompositeDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/VariableFieldDefn.h"
#include "elements/SectionedNumberFormatter.h"
#include "elements/StringValidator.h"
#include "support/DefinitionBytes.h"
#include "support/DefinitionRecords.h"
#include "support/DefinitionSetup.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using testing::FieldRecord;
using testing::readExactly;

// A string field whose lengths and alignment differ from its repeats, so that a reader that mixes
// them up is caught; as a variable field, key index 2, basic type N (1) and type id C (7).
FieldRecord stringField() {
  return {.minLength = 1, .maxLength = 9, .variable = PcfWriter().i32(2).i32(1).text16(u"N").i32(1).i32(1).text16(u"C").i32(7).take(),
          .alignment = 1};
}

// A warehouse with custom types 1 (base long), 2 (a plain alias of quoted text), 3 (base
// uuencoded), array types 4 (of type 3) and 5 (of double), and the user-data keys "Other", "Tag".
std::unique_ptr<MessageWarehouseDefn> typedWarehouse() {
  PcfWriter w;
  w.i32(883).text8("PCFFILE");
  const auto custom = [&](const char* name, int32_t id, int32_t base) {
    w.text8(name).i32(id).i32(base).boolean(false).i32(0).i32(0).text16(u"").boolean(false).i32(0);
  };
  w.i32(3);
  custom("Counter", 1, 1);
  w.text8("Quoted").i32(2).i32(14).boolean(true);
  custom("Encoded", 3, 7);
  w.i32(2).text8("Encodeds").i32(4).i32(9).i32(3).i32(6).text8("Doubles").i32(5).i32(3).i32(6);
  w.boolean(false).count(2).text16(u"Other").text16(u"Tag").count(0).i32(0).i32(0);
  auto warehouse = std::make_unique<MessageWarehouseDefn>();
  readExactly(w.bytes(), [&](DefinitionFile& file) { warehouse->read(file); });
  return warehouse;
}

struct LoadedField {
  std::unique_ptr<MessageWarehouseDefn> warehouse = typedWarehouse();
  MessageSetDefn set{*warehouse};
  FieldUpdates updates;
  FieldDefn field;

  LoadedField() {
    auto codes = std::make_unique<ValidationTableDefn>();
    readExactly(PcfWriter().text8("Codes").i32(1).text16(u"A").bytes(), [&](DefinitionFile& file) { codes->load(file, 883, false); });
    testing::DefinitionSetup::addValidationTable(set, std::move(codes));
  }
};

// Loads the record and checks that exactly its bytes were read.
std::unique_ptr<LoadedField> load(const FieldRecord& record, int version) {
  auto loaded = std::make_unique<LoadedField>();
  readExactly(record.write(version).bytes(), [&](DefinitionFile& file) { loaded->field.load(loaded->set, file, version, loaded->updates); });
  return loaded;
}

std::string fieldLoadFailure(const FieldRecord& record, int version) {
  return testing::invalidFileMessage([&] { load(record, version); });
}

TEST(FieldDefnTest, SpecialDefaults) {
  struct Case {
    const char* what; int32_t dataType; std::u16string given; int version; int32_t countKind; std::u16string defaultValue;
    std::string linkedFieldName; std::string failure;
  } cases[] = {
      {"lone # counts repeats", 1, u"#", 883, 1, u"", "", ""},
      {"path of repeats", 0, u"#GRP/SEG", 883, 1, u"GRP/SEG", "", ""},
      {"segments", 1, u"#12#S", 883, 2, u"12", "", ""},
      {"segments, small letter, rest ignored", 12, u"#12#segments", 883, 2, u"12", "", ""},
      {"groups", 1, u"#G1#g", 883, 3, u"G1", "", ""},
      {"messages", 0, u"#5#M", 883, 4, u"5", "", ""},
      {"empty path", 1, u"##S", 883, 2, u"", "", ""},
      {"unknown count item", 1, u"#12#x", 883, 0, u"", "", "Invalid count item specified"},
      {"empty count item", 1, u"#12#", 883, 0, u"", "", "Invalid count item specified"},
      {"counted field keeps its +", 0, u"#+REPS", 883, 0, u"", "+REPS", ""},
      {"length field of raw binary", 5, u"#LEN", 883, 0, u"LEN", "LEN", ""},
      {"raw binary without #", 5, u"LEN", 883, 0, u"", "", "No length field specified for raw binary field"},
      {"raw binary without default", 5, u"", 883, 0, u"", "", "No length field specified for raw binary field"},
      {"raw binary with # only", 5, u"#", 883, 0, u"", "", "No length field specified for raw binary field"},
      {"string keeps its #", 4, u"#12#S", 883, 0, u"#12#S", "", ""},
      {"float keeps its #", 2, u"#12#x", 883, 0, u"#12#x", "", ""},
      {"custom of base long counts", 9, u"#3#S", 883, 2, u"3", "", ""},
      {"before 769 nothing is special", 1, u"#12#x", 768, 0, u"#12#x", "", ""},
      {"before 769 raw binary needs no length field", 5, u"", 768, 0, u"", "", ""},
      {"escapes of the path expanded after the split", 1, u"#\\x41\\u0042#S", 883, 2, u"AB", "", ""},
      {"escapes of plain text", 4, u"a\\x09b", 883, 0, u"a\tb", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    auto record = stringField();
    record.dataType = c.dataType;
    record.typeId = 1;
    record.defaultValue = c.given;
    record.format = u"9.9";
    if (!c.failure.empty()) {
      EXPECT_EQ(fieldLoadFailure(record, c.version), c.failure);
      continue;
    }
    const auto loaded = load(record, c.version);
    const FieldDefn& field = loaded->field;
    EXPECT_EQ(field.getCountKind(), c.countKind);
    EXPECT_EQ(field.getDefaultValue().str(), c.defaultValue);
    EXPECT_EQ(field.getLinkedFieldName(), c.linkedFieldName);
    // A special default takes the format away.
    const bool special = c.version >= 769 && c.given.starts_with(u"#") && c.dataType != 2 && c.dataType != 4;
    EXPECT_EQ(field.getFormat().str(), special ? u"" : u"9.9");
  }
}

// A pattern is built while the field loads: a number picture without a section to go by fails
// the load, and so does an expression that doesn't compile, with the plain integer 0 that the
// warehouse turns into its failure of an unexpected error.
TEST(FieldDefnTest, PatternsThatCantBeBuiltFailTheLoad) {
  auto record = stringField();
  record.dataType = 1;
  for (const char16_t* format : {u"@", u"@;0", u"@0;;"}) {
    record.format = format;
    EXPECT_EQ(fieldLoadFailure(record, 883), messages::kEmptyNumberFormatSection);
  }
  record.dataType = 4;
  record.format = u"@[A-";
  EXPECT_THROW(load(record, 883), int);
  record.format = u"@[A-Z]";
  EXPECT_NE(dynamic_cast<const StringValidator*>(load(record, 883)->field.getFormatter()), nullptr);
}

// The text the compiler writes for a count is read back as the same count.
TEST(FieldDefnTest, CountTextReadsBackAsItsCount) {
  for (const int32_t kind : {FieldDefn::kCountRepeats, FieldDefn::kCountSegments, FieldDefn::kCountGroups, FieldDefn::kCountMessages})
    for (const std::u16string_view path : {u"", u"12", u"GRP/SEG"}) {
      const std::u16string text = FieldDefn::countText(kind, path);
      ASSERT_TRUE(text.starts_with(u"#"));
      std::u16string_view readPath;
      EXPECT_EQ(FieldDefn::splitCountItem(std::u16string_view(text).substr(1), readPath), kind);
      EXPECT_EQ(readPath, path);
    }
}

TEST(FieldDefnTest, PatternFormatsFromVersion519) {
  auto record = stringField();
  record.dataType = 3;
  record.defaultValue = u"1.5";
  record.format = u"@99.99";
  const auto newer = load(record, 519);
  EXPECT_EQ(newer->field.getFormat().str(), u"99.99");
  EXPECT_TRUE(newer->field.getDefaultValue().empty());
  const auto* picture = dynamic_cast<const SectionedNumberFormatter*>(newer->field.getFormatter());
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->getFormat(), u"99.99");

  const auto older = load(record, 518);
  EXPECT_EQ(older->field.getFormat().str(), u"@99.99");
  EXPECT_EQ(older->field.getDefaultValue().str(), u"1.5");

  // The pattern empties the default before it could be read as a count.
  record.dataType = 1;
  record.defaultValue = u"#12#x";
  EXPECT_EQ(load(record, 883)->field.getCountKind(), 0);
}

TEST(FieldDefnTest, RequiredRaisesMinRepeats) {
  const std::tuple<bool, int32_t, int32_t> cases[] = {{true, 0, 1}, {true, 3, 3}, {false, 0, 0}};
  for (const auto& [required, given, expected] : cases) {
    auto record = stringField();
    record.required = required;
    record.minRepeats = given;
    EXPECT_EQ(load(record, 883)->field.getMinRepeats(), expected) << required << " " << given;
  }
}

TEST(FieldDefnTest, TypesFlagsAndEffectiveType) {
  struct Case { int32_t dataType; int32_t typeId; int32_t effectiveType; uint32_t flags; bool binary, numeric; } cases[] = {
      {0, 0, 0, 0, false, true},   {3, 0, 3, 0, false, true},    {4, 0, 4, 0, false, false},
      {5, 0, 5, 0, true, false},   {8, 0, 8, 0, true, false},    {12, 0, 12, 0, false, true},
      {13, 0, 13, 0, false, true}, {14, 0, 14, 0, false, false},
      {9, 1, 1, 0x01, false, true},    // custom of base long
      {9, 2, 14, 0, false, false},     // a plain alias is a plain field
      {9, 3, 7, 0x01, true, false},    // custom of base uuencoded
      {9, 99, 9, 0x01, false, false},  // an unknown custom type
      {10, 4, 7, 0x01, true, false},   // array of a custom type: through it to its base
      {10, 5, 3, 0x01, false, true},   // array of double
      {11, 0, 11, 0x01, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "type " << c.dataType << " id " << c.typeId);
    auto record = stringField();
    record.dataType = c.dataType;
    record.typeId = c.typeId;
    record.defaultValue = u"#L";  // a length field, for the raw binary case
    record.presenceIndicator = true;
    const auto loaded = load(record, 883);
    const FieldDefn& field = loaded->field;
    EXPECT_EQ(field.getEffectiveType(), c.effectiveType);
    EXPECT_EQ(field.getFlags(), c.flags | FieldDefn::kHasFieldPresenceIndicator);
    EXPECT_EQ(field.getIsBinary(), c.binary);
    EXPECT_EQ(field.getIsNumeric(), c.numeric);
  }
}

TEST(FieldDefnTest, VariableRecord) {
  auto record = stringField();
  record.dataType = 11;
  const auto loaded = load(record, 853);
  const VariableFieldDefn* variable = loaded->field.getVariableDefn();
  ASSERT_NE(variable, nullptr);
  EXPECT_EQ(variable->getKeyFieldIndex(), 2);
  EXPECT_EQ(variable->getBasicTypes(), (std::map<std::u16string, int32_t>{{u"N", 1}}));
  EXPECT_EQ(variable->getTypeIds(), (std::map<std::u16string, int32_t>{{u"C", 7}}));
  // Before the type tables a variable field has no record at all.
  EXPECT_EQ(load(record, 852)->field.getVariableDefn(), nullptr);
}

TEST(FieldDefnTest, VersionGatedFields) {
  auto record = stringField();
  record.hidden = true;
  record.hasOverrides = false;
  record.table = "Codes";
  record.userData = {{0, u"x"}};
  record.presenceIndicator = true;
  struct Case { int version; bool hidden, hasOverrides, table, userData, presence; } cases[] = {
      {514, false, false, false, false, false}, {515, false, false, true, false, false},
      {516, true, false, true, false, false},   {799, true, false, true, false, false},
      {800, true, true, true, false, false},    {801, true, true, true, false, false},
      {802, true, false, true, false, false},   {854, true, false, true, false, false},
      {855, true, false, true, true, false},    {865, true, false, true, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.version);
    const auto loaded = load(record, c.version);
    const FieldDefn& field = loaded->field;
    EXPECT_EQ(field.isHidden(), c.hidden);
    EXPECT_EQ(field.getHasOverrides(), c.hasOverrides);
    EXPECT_EQ(field.getValidationTable() != nullptr, c.table);
    EXPECT_EQ(field.getUserData().size(), c.userData ? 1u : 0u);
    EXPECT_EQ(field.hasFieldPresenceIndicator(), c.presence);
  }
}

TEST(FieldDefnTest, ValidationTableMustBeKnown) {
  auto record = stringField();
  record.table = "Codes";
  const auto loaded = load(record, 883);
  EXPECT_EQ(loaded->field.getValidationTable(), loaded->set.findValidationTable("Codes"));
  record.table = "codes";  // names count case
  EXPECT_EQ(fieldLoadFailure(record, 883), std::string(messages::kUnknownValidationTable) + "codes");
}

TEST(FieldDefnTest, TagFromUserDataOrName) {
  auto record = stringField();
  record.name = "N\xE9";
  EXPECT_EQ(load(record, 883)->field.getTag().str(), u"N\uFFE9");
  record.userData = {{0, u"other"}, {1, u"TAG1"}};
  EXPECT_EQ(load(record, 883)->field.getTag().str(), u"TAG1");
}

TEST(FieldDefnTest, CompositeFieldLeavesItsOverridesForLater) {
  auto record = stringField();
  record.compositeId = 42;
  record.defaultValue = u"#12#x";  // a composite field's default is never read as a count
  const auto loaded = load(record, 883);
  EXPECT_TRUE(loaded->field.isComposite());
  EXPECT_EQ(loaded->field.getDataType(), -1);
  EXPECT_EQ(loaded->field.getCompositeId(), 42);
  EXPECT_EQ(loaded->field.getComposite(), nullptr);
  EXPECT_EQ(loaded->updates.count(&loaded->field), 1u);
  // Even a file without override blocks leaves an (empty) update, so every composite field gets a control.
  EXPECT_EQ(load(record, 799)->updates.size(), 1u);
}

}  // namespace
}  // namespace vantrelia
