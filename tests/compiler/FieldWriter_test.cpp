// Fields in the definition language, compiled and read back by the engine's own field reader.

#include <gtest/gtest.h>

#include "definitions/VariableFieldDefn.h"
#include "support/CompiledComposites.h"
#include "support/CompilerTesting.h"

namespace vantrelia::compiler {
namespace {

using testing::compileComposites;
using testing::compositeCompileFailure;
using testing::failsWith;
using testing::versionGate;

// One composite C holding the fields given in flow style, one per entry.
std::string withFields(const std::vector<std::string>& fields, const std::string& more = "") {
  std::string yaml = more + "composites:\n  - name: C\n    fields:\n";
  for (const auto& field : fields) yaml += "      - " + field + "\n";
  return yaml;
}

TEST(FieldWriterTest, EveryDataTypeByNameAndCode) {
  const std::string types = R"(
primitiveTypes: [{name: Money, baseType: strictReal}]
arrayTypes: [{name: Moneys, dataType: Money}]
)";
  const struct {
    std::string dataType;
    int32_t code, effective;
    std::string more = "";
  } cases[] = {
      {"short", 0, 0},   {"long", 1, 1},         {"float", 2, 2},       {"double", 3, 3},     {"string", 4, 4},
      {"base64", 6, 6},  {"uuencoded", 7, 7},    {"hex", 8, 8},         {"Money", 9, 13},     {"Moneys", 10, 13},
      {"strictInteger", 12, 12}, {"strictReal", 13, 13}, {"quoted", 14, 14}, {"0", 0, 0},   {"8", 8, 8},
      {"13", 13, 13},    {"14", 14, 14},  {"binary", 5, 5, ", lengthField: L"},  {"variable", 11, 11, ", variable: {keyField: K}"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.dataType);
    const std::string field = "{name: F, dataType: \"" + c.dataType + "\"" + c.more + "}";
    const auto compiled = compileComposites(withFields({"{name: L, dataType: long}", "{name: K}", field}, types));
    EXPECT_EQ(compiled->field("C", 2).getDataType(), c.code);
    EXPECT_EQ(compiled->field("C", 2).getEffectiveType(), c.effective);
  }
}

TEST(FieldWriterTest, AttributesRoundTrip) {
  const auto compiled = compileComposites(R"(
validationTables: [{name: Codes, entries: [A]}]
composites:
  - name: C
    fields:
      - name: F
        required: true
        minLength: 2
        maxLength: 9
        minRepeats: 0
        maxRepeats: -1
        default: 'x\u0041'
        hidden: true
        hasOverrides: false
        alignment: zeroMax
        format: "9.9"
        table: Codes
        userData: {Tag: "T1", Note: n}
        fieldPresenceIndicator: true
      - {name: G, alignment: 3}
)");
  const FieldDefn& f = compiled->field("C", 0);
  EXPECT_TRUE(f.isRequired());
  EXPECT_EQ(f.getMinLength(), 2);
  EXPECT_EQ(f.getMaxLength(), 9);
  EXPECT_EQ(f.getMinRepeats(), 1);  // required
  EXPECT_EQ(f.getMaxRepeats(), -1);
  EXPECT_EQ(f.getDefaultValue().str(), u"xA");  // the escape is the engine's to expand
  EXPECT_TRUE(f.isHidden());
  EXPECT_FALSE(f.getHasOverrides());
  EXPECT_EQ(f.getAlignment(), qxZeroMax);
  EXPECT_EQ(f.getFormat().str(), u"9.9");
  EXPECT_EQ(f.getValidationTable(), compiled->set->findValidationTable("Codes"));
  EXPECT_EQ(f.getTag().str(), u"T1");
  EXPECT_EQ(f.getUserData().size(), 2u);
  EXPECT_TRUE(f.hasFieldPresenceIndicator());
  const FieldDefn& g = compiled->field("C", 1);
  EXPECT_EQ(g.getAlignment(), qxRightMin);
  EXPECT_EQ(g.getMaxRepeats(), 1);
  EXPECT_EQ(g.getTag().str(), u"G");
  EXPECT_TRUE(g.getHasOverrides());
}

TEST(FieldWriterTest, SpecialDefaultsAsTheUserMeansThem) {
  struct Case {
    std::string field;
    int version;
    int32_t countKind;
    std::u16string defaultValue;
    std::string linked;
  } cases[] = {
      {"{name: F, dataType: long, count: repeats}", 883, 1, u"", ""},
      {"{name: F, dataType: short, count: segments}", 883, 2, u"", ""},
      {"{name: F, dataType: strictInteger, count: {kind: groups, path: GRP}}", 883, 3, u"GRP", ""},
      {"{name: F, dataType: long, count: {kind: messages, path: '5'}}", 769, 4, u"5", ""},
      {"{name: F, dataType: long, default: '#12#S'}", 883, 2, u"12", ""},
      {"{name: F, dataType: long, countedField: REPS}", 883, 0, u"", "+REPS"},
      {"{name: F, dataType: binary, lengthField: LEN}", 883, 0, u"LEN", "LEN"},
      {"{name: F, dataType: binary, default: '#LEN'}", 769, 0, u"LEN", "LEN"},
      {"{name: F, dataType: binary}", 768, 0, u"", ""},
      {"{name: F, dataType: long, default: '#12#x'}", 768, 0, u"#12#x", ""},
      {"{name: F, default: '#12#x'}", 883, 0, u"#12#x", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.field + " at " + std::to_string(c.version));
    const auto compiled = compileComposites(withFields({c.field}), c.version);
    const FieldDefn& field = compiled->field("C", 0);
    EXPECT_EQ(field.getCountKind(), c.countKind);
    EXPECT_EQ(field.getDefaultValue().str(), c.defaultValue);
    EXPECT_EQ(field.getLinkedFieldName(), c.linked);
  }
}

TEST(FieldWriterTest, VariableFieldsFindTheirKeyAndTypesByName) {
  const auto compiled = compileComposites(R"(
primitiveTypes: [{name: ID}]
arrayTypes: [{name: IDs, dataType: ID}]
composites:
  - name: C
    fields:
      - {name: Value, dataType: variable, variable: {keyField: Kind, types: {c: D, i: ID, a: IDs}, basicTypes: {n: long, s: quoted}}}
      - {name: Kind}
  - {name: D, fields: [{name: X}]}
)");
  const VariableFieldDefn* variable = compiled->field("C", 0).getVariableDefn();
  ASSERT_NE(variable, nullptr);
  EXPECT_EQ(variable->getKeyFieldIndex(), 1);
  EXPECT_EQ(variable->getBasicTypes(), (std::map<std::u16string, int32_t>{{u"n", 1}, {u"s", 14}}));
  const auto& ids = variable->getTypeIds();
  // Each id finds what the source named, in the engine's order: composite, custom, array.
  EXPECT_EQ(compiled->set->findCompositeById(ids.at(u"c")), &compiled->composite("D"));
  EXPECT_EQ(compiled->set->findCompositeById(ids.at(u"i")), nullptr);
  EXPECT_EQ(compiled->warehouse.findPrimitiveType(ids.at(u"i"))->getName().str(), "ID");
  EXPECT_EQ(compiled->set->findCompositeById(ids.at(u"a")), nullptr);
  EXPECT_EQ(compiled->warehouse.findPrimitiveType(ids.at(u"a")), nullptr);
  EXPECT_EQ(compiled->warehouse.findArrayType(ids.at(u"a"))->getName().str(), "IDs");
}

TEST(FieldWriterTest, MistakesAndVersionLimitsNameTheLine) {
  const auto tooNew = [](int line, const std::string& key, int gate, int version) {
    return versionGate(line, key, "composite 'C' field 'F'", gate, version);
  };
  const std::string table = "validationTables: [{name: T}]\n";
  const struct {
    std::string source;
    std::string error;  // the start of the message; "" for a source that compiles
    int version = pcf::kNewestVersion;
  } cases[] = {
      {withFields({"{name: F, hidden: true}"}), tooNew(4, "hidden", 516, 515), 515},
      {withFields({"{name: F, hidden: false}"}), "", 515},
      {withFields({"{name: F, dataType: double, format: '@99.9'}"}), tooNew(4, "format", 519, 518), 518},
      {withFields({"{name: F, dataType: double, format: '@99.9'}"}), "", 519},
      {withFields({"{name: F, table: T}"}, table), tooNew(5, "table", 515, 514), 514},
      {withFields({"{name: F, dataType: long, count: repeats}"}), tooNew(4, "count", 769, 768), 768},
      {withFields({"{name: F, dataType: binary, lengthField: L}"}), tooNew(4, "lengthField", 769, 768), 768},
      {withFields({"{name: F, hasOverrides: false}"}), tooNew(4, "hasOverrides: false", 802, 801), 801},
      {withFields({"{name: F, hasOverrides: true}"}), tooNew(4, "hasOverrides: true", 802, 799), 799},
      {withFields({"{name: F, hasOverrides: true}"}), "", 800},
      {withFields({"{name: F, hasOverrides: false}"}), "", 799},
      {withFields({"{name: F, userData: {Note: x}}"}), tooNew(4, "userData", 855, 854), 854},
      {withFields({"{name: F, fieldPresenceIndicator: true}"}), tooNew(4, "fieldPresenceIndicator", 865, 864), 864},
      {withFields({"{name: K}", "{name: F, dataType: variable, variable: {keyField: K}}"}), tooNew(5, "dataType", 853, 852), 852},
      {withFields({"{name: F, default: \"\\u0141\"}"}), "line 4: 'default' of composite 'C' field 'F' has a character that needs format version 832", 831},
      {withFields({"{name: F, default: \"\\u0141\"}"}), "", 832},
      {withFields({"{name: F, dataType: binary}"}), "line 4: composite 'C' field 'F' is raw binary and needs a 'lengthField'", 769},
      {withFields({"{dataType: long}"}), "line 4: composite 'C' field 0 needs a name"},
      {withFields({"{name: F, dataType: Nothing}"}), "line 4: 'dataType' of composite 'C' field 'F' names neither"},
      {withFields({"{name: F, table: Nope}"}), "line 4: 'table' of composite 'C' field 'F' names no validation table of the set: 'Nope'"},
      {withFields({"{name: F, composite: C, format: x}"}), "line 4: 'format' of composite 'C' field 'F' belongs to a primitive field"},
      {withFields({"{name: F, overrides: {}}"}), "line 4: 'overrides' of composite 'C' field 'F' belongs to a composite field"},
      {withFields({"{name: F, dataType: long, default: '#12#x'}"}), "line 4: 'default' of composite 'C' field 'F' makes the field a count"},
      {withFields({"{name: F, dataType: long, count: {kind: segments, path: 'a#b'}}"}), "line 4: 'path' of 'count' of"},
      {withFields({"{name: F, count: repeats}"}), "line 4: 'count' of composite 'C' field 'F' needs a field of base type short"},
      {withFields({"{name: F, dataType: long, count: repeats, format: '@9'}"}), "line 4: 'count' of composite 'C' field 'F' is lost"},
      {withFields({"{name: F, dataType: binary, lengthField: L, format: '@9'}"}), "line 4: 'lengthField' of composite 'C' field 'F' is lost"},
      {withFields({"{name: F, dataType: variable, variable: {keyField: K}}"}), "line 4: 'keyField' of 'variable' of composite 'C' field 'F' names no field"},
      {withFields({"{name: F, dataType: variable, variable: {keyField: F, types: {x: Nope}}}"}),
       "line 4: entry 'x' of 'types' of 'variable' of composite 'C' field 'F' names neither a composite"},
      // Ids given by hand may clash; the engine would then read the composite.
      {"primitiveTypes: [{name: ID, id: 3}]\n" + withFields({"{name: F, dataType: variable, variable: {keyField: F, types: {x: ID}}}"}) +
           "  - {name: D, id: 3}\n",
       "line 5: entry 'x' of 'types' of 'variable' of composite 'C' field 'F' names type 'ID', whose id 3 composite 'D' also has"},
  };
  for (const auto& c : cases) EXPECT_TRUE(failsWith(compositeCompileFailure(c.source, c.version), c.error)) << c.source << " at " << c.version;
}

}  // namespace
}  // namespace vantrelia::compiler
