// Composites and the override trees of their composite fields in the definition language,
// compiled and read back by the engine's own readers.

#include <gtest/gtest.h>

#include "definitions/FieldInstances.h"
#include "support/CompiledComposites.h"
#include "support/CompilerTesting.h"
#include "tool/CompositeJson.h"

namespace vantrelia::compiler {
namespace {

using Path = std::vector<int32_t>;

using testing::compileComposites;
using testing::compositeCompileFailure;
using testing::failsWith;
using testing::versionGate;

TEST(CompositeWriterTest, RecordsIdsAndForwardReferences) {
  for (const int version : {853, 857, 865, 883}) {
    SCOPED_TRACE(version);
    std::string text = "primitiveTypes: [{name: T1}, {name: T2}]\n";
    text += "composites:\n  - name: Outer\n    separator: string\n    specialSeparator: \"&\"\n    fixedWidth: true\n";
    if (version >= 855) text += "    userData: {Note: outer}\n";
    if (version >= 865) text += "    presenceIndicator: {separator: user2, text: \"\\u00A7\"}\n";
    text += "    fields: [{name: In, composite: Inner}, {name: K}, {name: V, dataType: variable, variable: {keyField: K}}]\n";
    text += "  - {name: Given, id: 4, fields: [{name: X}]}\n  - {name: Inner, fields: [{name: Y}]}\n";
    const auto compiled = compileComposites(text, version);
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
    // The key and the field it rules are marked at load, as in a segment.
    ASSERT_NE(outer.getVariableKeys(), nullptr);
    EXPECT_EQ(*outer.getVariableKeys(), (std::map<int32_t, int32_t>{{1, 2}}));
    EXPECT_TRUE(outer.getField(1).isVariableTypeField());
    EXPECT_EQ(compiled->composite("Inner").getVariableKeys(), nullptr);
    EXPECT_EQ(outer.getCompositeType(), version >= 865 ? qxCompTypeFieldPresenceIndicator : qxCompTypeNormal);
    if (version >= 865) {
      EXPECT_EQ(outer.getSpecialSeparatorType(), qxSepUser2);
      EXPECT_EQ(outer.getIndicatorSeparatorString().str(), u"\u00A7");
    }
  }
}

TEST(CompositeWriterTest, OverrideTreeKeyedByNames) {
  const auto compiled = compileComposites(R"(
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

// Composite H whose field O, of composite C, states `field` and overrides C's fields: A (long), N (of composite D),
// R (raw binary) and, with `raw`, M of the raw binary custom type Raw declared ahead of them.
std::string overriding(const std::string& overrides, const std::string& field = "required: false", bool raw = false) {
  return std::string(raw ? "primitiveTypes: [{name: Raw, baseType: binary}]\n" : "") +
         "composites:\n  - name: H\n    fields:\n      - name: O\n        composite: C\n        " + field +
         "\n        overrides:\n          " + overrides + "\n  - name: C\n    fields: [{name: A, dataType: long}, {name: N, composite: D}, " +
         "{name: R, dataType: binary, lengthField: A}" + (raw ? ", {name: M, dataType: Raw, lengthField: A}" : "") +
         "]\n  - {name: D, fields: [{name: Z}]}\n";
}

TEST(CompositeWriterTest, MistakesAndVersionLimitsNameTheLine) {
  const std::string a = "the override of field 'A' of composite 'C'", n = "the override of field 'N' of composite 'C'";
  const std::string o = "composite 'H' field 'O'";
  const struct {
    std::string source;
    std::string error;  // the start of the message; "" for a source that compiles
    int version = pcf::kNewestVersion;
  } cases[] = {
      {overriding("A: {default: '1'}"), versionGate(7, "overrides", o, 800, 799), 799},
      {overriding("A: {default: '1', format: '9'}"), "", 800},
      {overriding("A: {default: '1'}", "overrideHeader: {required: true}"), versionGate(6, "overrideHeader", o, 801, 800), 800},
      {overriding("A: {required: true}"), versionGate(8, "required", a, 801, 800), 800},
      {overriding("N: {required: true}"), versionGate(8, "required", n, 801, 800), 800},
      {overriding("N: {overrides: {Z: {default: z}}}"), "", 800},
      {overriding("A: {hidden: true}"), versionGate(8, "hidden", a, 803, 802), 802},
      {overriding("A: {hidden: true}", "overrideHeader: {hidden: true}"), versionGate(6, "hidden", "'overrideHeader' of " + o, 803, 802), 802},
      {overriding("A: {maxLength: 4}"), versionGate(8, "maxLength", a, 871, 870), 870},
      {overriding("N: {minLength: 4}"), versionGate(8, "minLength", n, 871, 870), 870},
      {overriding("A: {situational: true}"), "", 867},
      {overriding("A: {situational: true}"),
       "line 8: 'situational' of " + a + ": from format version 868 the engine refuses it (\"Fields instances on composites do not "
       "support situational fields\")", 868},
      {overriding("A: {default: '1'}", "overrideHeader: {situational: true}"),
       "line 6: 'situational' of 'overrideHeader' of " + o + ": from format version 868 the engine refuses it", 868},
      {overriding("A: {advancedValidation: true}"),
       "line 8: 'advancedValidation' of " + a + ": from format version 868 the engine refuses it (\"Fields instances on "
       "composites do not support advanced validation\")", 868},
      {overriding("N: {advancedValidation: true}"), "", 868},
      {overriding("Q: {default: x}"), "line 8: composite 'C' has no field named 'Q' to override"},
      {overriding("A: {}"), "line 8: " + a + " overrides nothing"},
      {overriding("N: {}"), "line 8: " + n + " overrides nothing"},
      {overriding("N: {overrides: {Q: {hidden: true}}}"), "line 8: composite 'D' has no field named 'Q' to override"},
      {overriding("A: {table: Nope}"), "line 8: 'table' of " + a + " names no validation table of the set: 'Nope'"},
      {overriding("A: {default: '#1#x'}"), "line 8: 'default' of " + a + " makes the field a count"},
      {overriding("A: {default: '1', format: '@9'}"), "line 8: 'default' of " + a + " is lost"},
      {overriding("A: {default: '1', count: repeats}"), "line 8: 'count' and 'default' of " + a},
      {overriding("N: {overrides: {Z: {count: repeats}}}"), "line 8: 'count' of the override of field 'Z' of composite 'D' needs"},
      {overriding("R: {default: x}"), "line 8: 'default' of the override of field 'R' of composite 'C': the default of a raw "
                                      "binary field names its length field and can't be overridden"},
      {overriding("M: {default: '#L'}", "required: false", true),
       "line 9: 'default' of the override of field 'M' of composite 'C': the default of a raw"},
      // A custom type of raw binary may take an ordinary default: only its own "#" is refused.
      {overriding("M: {default: 'x'}", "required: false", true), ""},
      {"composites: [{name: A, fields: []}, {name: A, fields: []}]", "line 1: composite name 'A' is used twice"},
      {"composites: [{name: A, id: 2}, {name: B, id: 2}]", "line 1: id 2 of composite 'B' is already used by composite 'A'"},
  };
  for (const auto& c : cases) EXPECT_TRUE(failsWith(compositeCompileFailure(c.source, c.version), c.error)) << c.source << " at " << c.version;
  // The bare flags of files before 868 reach the entries.
  const auto older = compileComposites(overriding("A: {situational: true, advancedValidation: true}"), 867);
  EXPECT_EQ(older->overrides("H", 0).getEntry(0)->getFlags(), 0x0060);
}

}  // namespace
}  // namespace vantrelia::compiler
