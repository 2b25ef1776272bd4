// Segments and their matches in the definition language, compiled and read back by the engine's
// segment reader through the set, as the message set writer puts them together.

#include <gtest/gtest.h>

#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/PcfVersion.h"
#include "support/CompiledComposites.h"
#include "support/CompilerTesting.h"
#include "tool/SegmentJson.h"

namespace vantrelia::compiler {
namespace {

using testing::compileComposites;
using testing::versionGate;

TEST(SegmentWriterTest, RoundTripByVersion) {
  for (const int version : {512, 851, 866, 883}) {
    SCOPED_TRACE(version);
    std::string text = "composites: [{name: CE, fields: [{name: Id}, {name: Text}]}]\nsegments:\n";
    text += "  - name: PID\n    separator: string\n    specialSeparator: \"|\"\n    fixedWidth: true\n";
    text += "    fields: [{name: SetId, dataType: long}, {name: Code, composite: CE";
    text += version >= 800 ? ", overrides: {Id: {default: X}}}]\n" : "}]\n";
    // Below 832 a match value is a byte text: 0xE9 comes back widened by its sign.
    text += std::string("    matches: [{path: PID.2.1, value: \"A\\u") + (version >= pcf::kWideValueTexts ? "00E9" : "FFE9") +
            "\"}, {path: PID/1, value: \"\"}]\n";
    if (version >= 855) text += "    userData: {Note: patient}\n    ncpdp: true\n";
    text += "  - {name: ZZ1, id: 1, tag: Z1}\n";
    if (version >= 866) text += "  - {name: NV, tag: \"\", nameValuePair: {separator: string, text: \"=\"}}\n";
    const auto compiled = compileComposites(text, version);
    const MessageSetDefn& set = *compiled->set;
    const SegmentDefn& pid = *set.getSegments().at(0);
    EXPECT_EQ(pid.getName().str(), "PID");
    EXPECT_EQ(pid.getTag().str(), u"PID");  // the name when the source gives no tag
    EXPECT_EQ(pid.getSeparatorType(), qxSepString);
    EXPECT_EQ(pid.getSpecialSeparatorString().str(), u"|");
    EXPECT_TRUE(pid.isFixedWidth());
    EXPECT_EQ(pid.getId(), 2);  // 1 is given to ZZ1
    EXPECT_EQ(pid.getField(1).getComposite(), set.findCompositeByName("CE"));
    // The override reached the composite field through the set's fix-up.
    if (version >= 800) {
      EXPECT_EQ(pid.getField(1).getInstancesControl()->getDefaultValue(0).str(), u"X");
    }
    ASSERT_EQ(pid.getMatches().size(), 2u);
    EXPECT_EQ(pid.getMatches()[0]->getFieldPath().str(), "PID/2/1");
    EXPECT_EQ(pid.getMatches()[0]->getValue().str(), version >= pcf::kWideValueTexts ? u"A\u00E9" : u"A\uFFE9");
    EXPECT_EQ(pid.getFlags(), version >= 857 ? SegmentDefn::kNcpdp : 0u);
    EXPECT_EQ(pid.getUserData().size(), version >= 855 ? 1u : 0u);
    EXPECT_EQ(set.findSegmentById(1)->getTag().str(), u"Z1");
    ASSERT_NE(set.getTagMap().lookup(u"Z1"), nullptr);
    EXPECT_EQ(set.getTagMap().lookupEmptyTag() != nullptr, version >= 866);

    const auto json = tool::toJson(pid);
    EXPECT_EQ(json["Tag"], "PID");
    EXPECT_EQ(json["fields"].size(), 2u);
    EXPECT_EQ(json["matches"][0]["FieldPath"], "PID/2/1");
    EXPECT_EQ(json["SegmentType"], 0);
    if (version >= 866) {
      const SegmentDefn& pairs = *set.getSegments().at(2);
      EXPECT_EQ(pairs.getSegmentType(), qxSegTypeNameValuePair);
      EXPECT_EQ(pairs.getNameValueSeparator()->SpecialSeparatorString.str(), u"=");
      EXPECT_EQ(tool::toJson(pairs)["nameValueSeparator"]["SpecialSeparatorString"], "=");
    }
  }
}

TEST(SegmentWriterTest, SpecialRecordsAndVariableFlag) {
  const auto compiled = compileComposites(R"(
segments:
  - {name: FP, presenceIndicator: {separator: user1, text: "~"}}
  - {name: NV, nameValuePair: {separator: field2}}
  - {name: VR, fields: [{name: K}, {name: V, dataType: variable, variable: {keyField: K}}]}
)", 883);
  const auto& segments = compiled->set->getSegments();
  EXPECT_EQ(segments[0]->getSegmentType(), qxSegTypeFieldPresenceIndicator);
  EXPECT_EQ(segments[0]->getPresenceSeparator()->SpecialSeparatorType, qxSepUser1);
  EXPECT_EQ(segments[0]->getPresenceSeparator()->SpecialSeparatorString.str(), u"~");
  EXPECT_EQ(segments[1]->getNameValueSeparator()->SpecialSeparatorType, qxSepField2);
  EXPECT_EQ(segments[2]->getFlags(), SegmentDefn::kHasVariableField);
  EXPECT_EQ(*segments[2]->getVariableKeys(), (std::map<int32_t, int32_t>{{0, 1}}));
}

TEST(SegmentWriterTest, Refusals) {
  const std::string a = "segment 'A'";
  struct Case {
    const char* segments;
    int version;
    std::string error;  // "" for a source that compiles
  } cases[] = {
      {"{name: A, tag: \"\"}", 516, versionGate(1, "tag", a, 517, 516)},
      {"{name: A, ncpdp: true}", 856, versionGate(1, "ncpdp", a, 857, 856)},
      {"{name: A, userData: {K: v}}", 854, versionGate(1, "userData", a, 855, 854)},
      {"{name: A, presenceIndicator: {text: \"~\"}}", 864, versionGate(1, "presenceIndicator", a, 865, 864)},
      {"{name: A, nameValuePair: {text: \"=\"}}", 865, versionGate(1, "nameValuePair", a, 866, 865)},
      {"{name: A, presenceIndicator: {text: \"~\"}, nameValuePair: {text: \"=\"}}", 883,
       "line 1: segment 'A' is a presence indicator segment already; it can't hold name-value pairs too"},
      {"{name: A, nameValuePair: {separator: field2, text: \"=\"}}", 883,
       "line 1: 'text' of 'nameValuePair' of segment 'A' is used only with 'separator: string'"},
      {"{name: A, specialSeparator: \"&\"}", 883, "line 1: 'specialSeparator' of segment 'A' is used only with 'separator: string'"},
      {"{name: A, tag: \"\\u0100\"}", 883, "line 1: 'tag' of segment 'A' has a character that the file's byte texts can't carry"},
      {"{name: A, matches: [{value: X}]}", 883, "line 1: segment 'A' match 0 needs a 'path'"},
      {"{name: A, matches: [{path: A.1, value: \"\\u0100\"}]}", 831,
       "line 1: the value of segment 'A' match 0 has a character that a byte can't carry; files before version 832"},
      {"{name: A, colour: red}", 883, "line 1: unknown key 'colour' in segment 'A'"},
      {"{tag: A}", 883, "line 1: segment 0 needs a name"},
      // Names and ids are keys within the set.
      {"{name: A}, {name: A}", 883, "line 1: segment name 'A' is used twice"},
      {"{name: A, id: 3}, {name: B, id: 3}", 883, "line 1: id 3 of segment 'B' is already used by segment 'A'"},
      // The gates let the same sources through from their versions on.
      {"{name: A, tag: \"\", ncpdp: true}", 857, ""},
      {"{name: A, matches: [{path: A.1, value: \"\\u0100\"}]}", 832, ""},
  };
  for (const Case& c : cases) {
    const std::string source = std::string("segments: [") + c.segments + "]";
    EXPECT_TRUE(testing::failsWith(testing::compositeCompileFailure(source, c.version), c.error)) << source << " at " << c.version;
  }
}

}  // namespace
}  // namespace vantrelia::compiler
