// What the loader works out from a definition, as `inspect --json` shows it, for files compiled at
// versions on either side of the format's main changes.

#include <gtest/gtest.h>

#include "compiler/DefinitionCompiler.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"
#include "tool/ModelInspector.h"

namespace vantrelia {
namespace {

using Json = nlohmann::ordered_json;

Json inspect(const std::string& source, int version) {
  MessageFactory factory;
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(source, {version}));
  return tool::ModelInspector(factory.getWarehouse()).toJson();
}

// A set with one segment whose fields are given; composites CE (Identifier, Text) and types may be
// used by them.
std::string segmentWithFields(const std::string& fields, const std::string& head = "") {
  return head + R"(
messageSets:
  - name: S
    separators: {segment: '\x0D', field1: '|', repeat: {value: '~', replacement: '\u00410'}}
    composites:
      - {name: CE, fields: [{name: Identifier}, {name: Text, dataType: long}]}
    segments:
      - name: SEG
        fields:
)" + fields;
}

const Json& field(const Json& model, size_t index) { return model["messageSets"][0]["segments"][0]["fields"][index]; }

TEST(DerivedValuesTest, FieldsAndSeparatorsAtEachVersion) {
  // Fields every version carries: required lifts MinRepeats; escapes in defaults and separators.
  const std::string common = R"(          - {name: Req, required: true}
          - {name: Esc, default: '\x41\u0042\q'}
          - {name: Code, composite: CE}
)";
  for (int version : {512, 800, 851, 871, 883}) {
    SCOPED_TRACE(version);
    std::string fields = common;
    if (version >= 769)
      fields += R"(          - {name: Segs, dataType: long, default: "#12#S"}
          - {name: Reps, dataType: long, default: "#"}
          - {name: Counted, dataType: long, default: "#+REPS"}
          - {name: Len, dataType: long}
          - {name: Data, dataType: binary, lengthField: Len}
)";
    else fields += "          - {name: Hash, dataType: long, default: \"#12#S\"}\n";
    const Json model = inspect(segmentWithFields(fields), version);

    EXPECT_EQ(field(model, 0)["MinRepeats"], 1);
    EXPECT_EQ(field(model, 1)["DefaultValue"], "AB\\q");
    EXPECT_EQ(field(model, 1)["Tag"], "Esc") << "without user data the tag is the name";
    EXPECT_EQ(field(model, 2)["typeDefn"], "CE");
    EXPECT_EQ(field(model, 2)["DataType"], -1);
    const Json& separators = model["messageSets"][0]["separators"];
    EXPECT_EQ(separators["segment"]["Value"], "\r");
    EXPECT_EQ(separators["repeat"]["ReplacementValue"], "A0");
    EXPECT_EQ(separators["repeat"]["TerminatorReplacement"], "A0");

    if (version >= 769) {
      EXPECT_EQ(field(model, 3)["countKind"], 2);
      EXPECT_EQ(field(model, 3)["DefaultValue"], "12");
      EXPECT_EQ(field(model, 4)["countKind"], 1);
      EXPECT_EQ(field(model, 4)["DefaultValue"], "");
      EXPECT_EQ(field(model, 5)["linkedFieldName"], "+REPS");
      EXPECT_EQ(field(model, 5)["countKind"], 0);
      EXPECT_EQ(field(model, 7)["linkedFieldName"], "Len");
      EXPECT_EQ(field(model, 7)["isBinary"], true);
      EXPECT_EQ(field(model, 6)["isNumeric"], true);
    } else {
      EXPECT_EQ(field(model, 3)["DefaultValue"], "#12#S") << "before 769 a default is plain text";
      EXPECT_EQ(field(model, 3)["countKind"], 0);
    }
  }
}

TEST(DerivedValuesTest, OverridesOnCompositeFieldsByVersion) {
  for (int version : {800, 851, 871, 883}) {
    SCOPED_TRACE(version);
    std::string overrides = "Identifier: {default: X}";
    if (version >= 801) overrides += ", Text: {required: true, default: \"#5#M\"}";
    if (version >= 871) overrides = "Identifier: {default: X, minLength: 2, maxLength: 9}, Text: {required: true, default: \"#5#M\"}";
    const Json model = inspect(segmentWithFields("          - {name: Code, composite: CE, overrides: {" + overrides + "}}\n"), version);
    const Json& entries = field(model, 0)["instancesControl"]["entries"];
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0]["DefaultValue"], "X");
    EXPECT_EQ(field(model, 0)["hasOverrides"], true);
    if (version >= 801) {
      EXPECT_EQ(entries[1]["Required"], true);
      EXPECT_EQ(entries[1]["countKind"], 4);
      EXPECT_EQ(entries[1]["DefaultValue"], "5");
      EXPECT_NE(entries[1]["flags"].get<int>() & 0x0200, 0) << "a count default adds its flag";
    } else {
      EXPECT_TRUE(entries[1].is_null());
    }
    if (version >= 871) {
      EXPECT_EQ(entries[0]["MinLength"], 2);
      EXPECT_EQ(entries[0]["MaxLength"], 9);
    }
  }
}

TEST(DerivedValuesTest, TypesTagsAndVariableFieldsFromTheirVersions) {
  const std::string head = R"(
userDataKeys: [Tag]
primitiveTypes:
  - {name: Alias, baseType: long, plainAlias: true}
  - {name: Checked, baseType: double, regularExpression: "[0-9.]+"}
)";
  const Json model = inspect(segmentWithFields(R"(          - {name: A, dataType: Alias}
          - {name: C, dataType: Checked}
          - {name: T, userData: {Tag: "T-9"}}
          - {name: Key}
          - {name: V, dataType: variable, variable: {keyField: Key, basicTypes: {N: long}}}
)", head), 883);
  EXPECT_EQ(field(model, 0)["effectiveType"], 1);
  EXPECT_EQ(field(model, 0)["flags"].get<int>() & 0x01, 0) << "a plain alias is a plain field";
  EXPECT_EQ(field(model, 1)["effectiveType"], 3);
  EXPECT_EQ(field(model, 1)["flags"].get<int>() & 0x01, 1);
  EXPECT_EQ(field(model, 1)["isNumeric"], true);
  EXPECT_EQ(field(model, 2)["Tag"], "T-9");
  EXPECT_EQ(field(model, 3)["flags"].get<int>() & 0x02, 2) << "the key of a variable field";
  EXPECT_EQ(field(model, 4)["effectiveType"], 11);
  EXPECT_EQ(model["messageSets"][0]["segments"][0]["flags"].get<int>() & 0x01, 1);
}

}  // namespace
}  // namespace vantrelia
