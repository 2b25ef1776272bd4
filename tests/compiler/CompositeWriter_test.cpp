// Composites and the override trees of their composite fields in the definition language,
// compiled and read back by the engine's own readers.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/CompositeWriter.h"
#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "compiler/TypeWriter.h"
#include "compiler/Utf8.h"
#include "compiler/ValidationTableWriter.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/DefinitionFile.h"
#include "definitions/FieldInstances.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfVersion.h"
#include "foundation/InvalidFile.h"
#include "support/CompiledComposites.h"
#include "tool/CompositeJson.h"

namespace vantrelia::compiler {
namespace {

using Path = std::vector<int32_t>;

using Compiled = testing::CompiledComposites;

std::unique_ptr<Compiled> compile(const std::string& yaml, int version = pcf::kNewestVersion) {
  return testing::compileComposites(yaml, version);
}

std::string compileFailure(const std::string& yaml, int version = pcf::kNewestVersion) {
  return testing::compositeCompileFailure(yaml, version);
}

TEST(CompositeWriterTest, RecordsIdsAndForwardReferences) {
  for (const int version : {853, 857, 865, 883}) {
    SCOPED_TRACE(version);
    std::string text;
    if (version >= 853) text += "primitiveTypes: [{name: T1}, {name: T2}]\n";
    text += "composites:\n  - name: Outer\n    separator: string\n    specialSeparator: \"&\"\n    fixedWidth: true\n";
    if (version >= 855) text += "    userData: {Note: outer}\n";
    if (version >= 865) text += "    presenceIndicator: {separator: user2, text: \"\\u00A7\"}\n";
    text += "    fields: [{name: In, composite: Inner}, {name: K}, {name: V, dataType: variable, variable: {keyField: K}}]\n";
    text += "  - {name: Given, id: 4, fields: [{name: X}]}\n  - {name: Inner, fields: [{name: Y}]}\n";
    const auto compiled = compile(text, version);
    const CompositeDefn& outer = compiled->composite("Outer");
    EXPECT_EQ(outer.getSeparatorType(), qxSepString);
    EXPECT_EQ(outer.getSpecialSeparatorString().str(), u"&");
    EXPECT_TRUE(outer.isFixedWidth());
    // Ids keep clear of the given one and of the two types' (1 and 2).
    EXPECT_EQ(outer.getId(), 3);
    EXPECT_EQ(compiled->composite("Given").getId(), 4);
    EXPECT_EQ(compiled->composite("Inner").getId(), 5);
    EXPECT_EQ(outer.getField(0).getComposite(), &compiled->composite("Inner"));
    // The flag word from 857 says what the engine works out by itself before it.
    EXPECT_EQ(outer.getFlags(), CompositeDefn::kHasVariableField);
    EXPECT_EQ(compiled->composite("Inner").getFlags(), 0u);
    EXPECT_EQ(outer.getCompositeType(), version >= 865 ? qxCompTypeFieldPresenceIndicator : qxCompTypeNormal);
    if (version >= 865) {
      EXPECT_EQ(outer.getSpecialSeparatorType(), qxSepUser2);
      EXPECT_EQ(outer.getIndicatorSeparatorString().str(), u"\u00A7");
    }
  }
}

TEST(CompositeWriterTest, OverrideTreeKeyedByNames) {
  const auto compiled = compile(R"(
validationTables: [{name: Codes, entries: [A]}]
composites:
  - name: Holder
    fields:
      - name: O
        composite: Outer
        overrideHeader: {required: true, minLength: 2}
        overrides:
          B: {format: "@99", table: Codes}
          Mid:
            required: true
            maxLength: 7
            overrides:
              Deep: {overrides: {Z: {hidden: true, minLength: 1}}}
              Y: {default: 'y\x41', maxLength: 3}
          A: {required: false, count: {kind: messages, path: '5'}}
  - name: Outer
    fields: [{name: A, dataType: long, required: true}, {name: Mid, composite: Mid}, {name: B, dataType: short}]
  - name: Mid
    fields: [{name: X}, {name: Deep, composite: Deep}, {name: Y}]
  - {name: Deep, fields: [{name: Z}]}
)");
  const auto& control = compiled->overrides("Holder", 0);
  EXPECT_FALSE(control.isRequired(Path{0}));
  EXPECT_EQ(control.getCountKind(Path{0}), 4);
  EXPECT_EQ(control.getDefaultValue(Path{0}).str(), u"5");
  EXPECT_EQ(control.getEntry(2)->getFlags(), 0x0007);
  EXPECT_EQ(control.getValidationTable(Path{2}), compiled->set->findValidationTable("Codes"));
  EXPECT_TRUE(control.isRequired(Path{1}));
  EXPECT_EQ(control.getMaxLength(Path{1}), 7);
  // Deep is written after Mid's other children and closed before Y, which lands in Mid again.
  EXPECT_TRUE(control.isHidden(Path{1, 1, 0}));
  EXPECT_EQ(control.getMinLength(Path{1, 1, 0}), 1);
  EXPECT_EQ(control.getDefaultValue(Path{1, 2}).str(), u"yA");
  EXPECT_EQ(control.getMaxLength(Path{1, 2}), 3);
  EXPECT_EQ(dynamic_cast<const FieldInstances&>(*control.getEntry(1)).getChild(1)->getFlags(), 0);
  // The header's required has no effect on the fields.
  EXPECT_FALSE(control.isRequired(Path{1, 0}));

  // The tree as the inspector shows it.
  const auto json = tool::toJson(compiled->composite("Holder"));
  const auto& tree = json["fields"][0]["instancesControl"];
  EXPECT_EQ(tree["count"], 3);
  EXPECT_EQ(tree["entries"][0]["countKind"], 4);
  EXPECT_EQ(tree["entries"][1]["children"][2]["DefaultValue"], "yA");
  EXPECT_TRUE(tree["entries"][1]["children"][0].is_null());
  EXPECT_EQ(tree["entries"][2]["ValidationTable"], "Codes");
  EXPECT_EQ(json["fields"][0]["typeDefn"], "Outer");
}

TEST(CompositeWriterTest, OverrideVersionGates) {
  const auto source = [](const std::string& field, const std::string& overrides) {
    return "composites:\n  - name: H\n    fields:\n      - name: O\n        composite: C\n        " + field +
           "\n        overrides:\n          " + overrides +
           "\n  - name: C\n    fields: [{name: A, dataType: long}, {name: N, composite: D}]\n  - {name: D, fields: [{name: Z}]}\n";
  };
  const auto gate = [](int line, const std::string& key, const std::string& what, int needed, int version) {
    return "line " + std::to_string(line) + ": '" + key + "' of " + what + " needs format version " + std::to_string(needed) +
           " or later; this file is compiled for version " + std::to_string(version);
  };
  const std::string a = "the override of field 'A' of composite 'C'";
  const std::string n = "the override of field 'N' of composite 'C'";
  struct Case {
    std::string source;
    int version;
    std::string error;
  } cases[] = {
      {source("required: false", "A: {default: '1'}"), 799, gate(7, "overrides", "composite 'H' field 'O'", 800, 799)},
      {source("required: false", "A: {default: '1', format: '9'}"), 800, ""},
      {source("overrideHeader: {required: true}", "A: {default: '1'}"), 800,
       gate(6, "overrideHeader", "composite 'H' field 'O'", 801, 800)},
      {source("required: false", "A: {required: true}"), 800, gate(8, "required", a, 801, 800)},
      {source("required: false", "N: {required: true}"), 800, gate(8, "required", n, 801, 800)},
      {source("required: false", "N: {overrides: {Z: {default: z}}}"), 800, ""},
      {source("required: false", "A: {hidden: true}"), 802, gate(8, "hidden", a, 803, 802)},
      {source("overrideHeader: {hidden: true}", "A: {hidden: true}"), 802,
       gate(6, "hidden", "'overrideHeader' of composite 'H' field 'O'", 803, 802)},
      {source("required: false", "A: {maxLength: 4}"), 870, gate(8, "maxLength", a, 871, 870)},
      {source("required: false", "N: {minLength: 4}"), 870, gate(8, "minLength", n, 871, 870)},
      {source("required: false", "A: {situational: true}"), 867, ""},
      {source("required: false", "A: {situational: true}"), 868,
       "line 8: 'situational' of " + a + ": from format version 868 the engine refuses it (\"Fields instances on composites do not "
       "support situational fields\")"},
      {source("overrideHeader: {situational: true}", "A: {default: '1'}"), 868,
       "line 6: 'situational' of 'overrideHeader' of composite 'H' field 'O': from format version 868 the engine refuses it"},
      {source("required: false", "A: {advancedValidation: true}"), 868,
       "line 8: 'advancedValidation' of " + a + ": from format version 868 the engine refuses it (\"Fields instances on "
       "composites do not support advanced validation\")"},
      {source("required: false", "N: {advancedValidation: true}"), 868, ""},
  };
  for (const Case& c : cases) {
    const std::string failure = compileFailure(c.source, c.version);
    EXPECT_EQ(failure.substr(0, c.error.size()), c.error) << c.source << " at " << c.version << "\n gave: " << failure;
    if (c.error.empty()) {
      EXPECT_EQ(failure, "");
    }
  }
  // The bare flags of files before 868 reach the entries.
  const auto older = compile(source("required: false", "A: {situational: true, advancedValidation: true}"), 867);
  EXPECT_EQ(older->overrides("H", 0).getEntry(0)->getFlags(), 0x0060);
}

TEST(CompositeWriterTest, SourceMistakesNameTheLine) {
  const auto source = [](const std::string& overrides, const std::string& more = "") {
    return more + "composites:\n  - name: H\n    fields:\n      - name: O\n        composite: C\n        overrides:\n          " +
           overrides + "\n  - name: C\n    fields: [{name: A, dataType: long}, {name: R, dataType: binary, lengthField: A}, "
           "{name: M, dataType: Raw, lengthField: A}, {name: N, composite: D}]\n  - {name: D, fields: [{name: Z}]}\n";
  };
  const std::string raw = "primitiveTypes: [{name: Raw, baseType: binary}]\n";
  const std::string a = "the override of field 'A' of composite 'C'";
  const struct {
    std::string source;
    std::string error;
  } cases[] = {
      {source("Q: {default: x}"), "line 7: composite 'C' has no field named 'Q' to override"},
      {source("A: {}"), "line 7: " + a + " overrides nothing"},
      {source("N: {}"), "line 7: the override of field 'N' of composite 'C' overrides nothing"},
      {source("N: {overrides: {Q: {hidden: true}}}"), "line 7: composite 'D' has no field named 'Q' to override"},
      {source("A: {table: Nope}"), "line 7: 'table' of " + a + " names no validation table of the set: 'Nope'"},
      {source("A: {default: '#1#x'}"), "line 7: 'default' of " + a + " makes the field a count"},
      {source("A: {default: '1', format: '@9'}"), "line 7: 'default' of " + a + " is lost"},
      {source("A: {default: '1', count: repeats}"), "line 7: 'count' and 'default' of " + a},
      {source("N: {overrides: {Z: {count: repeats}}}"), "line 7: 'count' of the override of field 'Z' of composite 'D' needs"},
      {source("R: {default: x}"), "line 7: 'default' of the override of field 'R' of composite 'C': the default of a raw "
                                  "binary field names its length field and can't be overridden"},
      {source("M: {default: '#L'}", raw), "line 8: 'default' of the override of field 'M' of composite 'C': the default of a raw"},
      {"composites: [{name: A, fields: []}, {name: A, fields: []}]", "line 1: composite name 'A' is used twice"},
      {"composites: [{name: A, id: 2}, {name: B, id: 2}]", "line 1: id 2 of composite 'B' is already used by composite 'A'"},
  };
  for (const auto& c : cases) {
    const std::string failure = compileFailure(c.source);
    EXPECT_EQ(failure.substr(0, c.error.size()), c.error) << c.source << "\n gave: " << failure;
  }
  // A custom type of raw binary may take an ordinary default: only its own "#" is refused.
  EXPECT_EQ(compileFailure(source("M: {default: 'x'}", raw)), "");
}

}  // namespace
}  // namespace vantrelia::compiler
