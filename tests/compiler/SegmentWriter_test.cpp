// Segments and their matches in the definition language, compiled and read back by the engine's
// segment reader through the set, as the message set writer puts them together.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/CompositeWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/SegmentWriter.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfVersion.h"
#include "foundation/InvalidFile.h"
#include "tool/SegmentJson.h"

namespace vantrelia::compiler {
namespace {

std::unique_ptr<MessageSetDefn> compile(const std::string& yaml, int version) {
  const SourceNode root(YAML::Load(yaml), "the set");
  CompileContext context(version);
  context.beginMessageSet();
  const auto composites = root.records("composites", "composite");
  const auto segments = root.records("segments", "segment");
  CompositeWriter::declare(composites, context);
  SegmentWriter::declare(segments, context);
  PcfWriter out;
  for (const auto& composite : composites) CompositeWriter::write(composite, context, out);
  for (const auto& segment : segments) SegmentWriter::write(segment, context, out);

  const auto bytes = out.take();
  std::istringstream source(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(source);
  auto set = std::make_unique<MessageSetDefn>("SET");
  FieldUpdates updates;
  std::vector<std::unique_ptr<CompositeDefn>> loaded(composites.size());
  for (auto& composite : loaded) (composite = std::make_unique<CompositeDefn>())->load(*set, file, version, updates);
  set->addComposites(std::move(loaded), updates);
  for (size_t i = 0; i < segments.size(); ++i) {
    auto segment = std::make_unique<SegmentDefn>();
    segment->load(*set, file, version, updates);
    set->addSegment(std::move(segment), updates);
  }
  EXPECT_THROW(file.readByte(), InvalidFile) << "bytes left behind the records";
  EXPECT_TRUE(updates.empty());
  return set;
}

std::string compileFailure(const std::string& yaml, int version) {
  try {
    compile(yaml, version);
  } catch (const CompileError& e) {
    return e.what();
  }
  return "";
}

TEST(SegmentWriterTest, RoundTripByVersion) {
  for (const int version : {512, 851, 866, 883}) {
    SCOPED_TRACE(version);
    std::string text = "composites: [{name: CE, fields: [{name: Id}, {name: Text}]}]\nsegments:\n";
    text += "  - name: PID\n    separator: string\n    specialSeparator: \"|\"\n    fixedWidth: true\n";
    text += "    fields: [{name: SetId, dataType: long}, {name: Code, composite: CE";
    text += version >= 800 ? ", overrides: {Id: {default: X}}}]\n" : "}]\n";
    // Below 832 a match value is a byte text: 0xE9 comes back widened by its sign.
    text += version >= pcf::kWideValueTexts ? "    matches: [{path: PID.2.1, value: \"A\\u00E9\"}" : "    matches: [{path: PID.2.1, value: \"A\\uFFE9\"}";
    text += ", {path: PID/1, value: \"\"}]\n";
    if (version >= 855) text += "    userData: {Note: patient}\n    ncpdp: true\n";
    text += "  - {name: ZZ1, id: 1, tag: Z1}\n";
    if (version >= 866) text += "  - {name: NV, tag: \"\", nameValuePair: {separator: string, text: \"=\"}}\n";
    const auto set = compile(text, version);
    const SegmentDefn& pid = *set->getSegments().at(0);
    EXPECT_EQ(pid.getName().str(), "PID");
    EXPECT_EQ(pid.getTag().str(), u"PID");  // the name when the source gives no tag
    EXPECT_EQ(pid.getSeparatorType(), qxSepString);
    EXPECT_EQ(pid.getSpecialSeparatorString().str(), u"|");
    EXPECT_TRUE(pid.isFixedWidth());
    EXPECT_EQ(pid.getId(), 2);  // 1 is given to ZZ1
    EXPECT_EQ(pid.getField(1).getComposite(), set->findCompositeByName("CE"));
    // The override reached the composite field through the set's fix-up.
    if (version >= 800) {
      EXPECT_EQ(pid.getField(1).getInstancesControl()->getDefaultValue(0).str(), u"X");
    }
    ASSERT_EQ(pid.getMatches().size(), 2u);
    EXPECT_EQ(pid.getMatches()[0]->getFieldPath().str(), "PID/2/1");
    EXPECT_EQ(pid.getMatches()[0]->getValue().str(), version >= pcf::kWideValueTexts ? u"A\u00E9" : u"A\uFFE9");
    EXPECT_EQ(pid.getFlags(), version >= 857 ? SegmentDefn::kNcpdp : 0u);
    EXPECT_EQ(pid.getUserData().size(), version >= 855 ? 1u : 0u);
    EXPECT_EQ(set->findSegmentById(1)->getTag().str(), u"Z1");
    ASSERT_NE(set->getTagMap().lookup(u"Z1"), nullptr);
    EXPECT_EQ(set->getTagMap().lookupEmptyTag() != nullptr, version >= 866);

    const auto json = tool::toJson(pid);
    EXPECT_EQ(json["Tag"], "PID");
    EXPECT_EQ(json["fields"].size(), 2u);
    EXPECT_EQ(json["matches"][0]["FieldPath"], "PID/2/1");
    EXPECT_EQ(json["SegmentType"], 0);
    if (version >= 866) {
      const SegmentDefn& pairs = *set->getSegments().at(2);
      EXPECT_EQ(pairs.getSegmentType(), qxSegTypeNameValuePair);
      EXPECT_EQ(pairs.getNameValueSeparator()->SpecialSeparatorString.str(), u"=");
      EXPECT_EQ(tool::toJson(pairs)["nameValueSeparator"]["SpecialSeparatorString"], "=");
    }
  }
}

TEST(SegmentWriterTest, SpecialRecordsAndVariableFlag) {
  const auto set = compile(R"(
segments:
  - {name: FP, presenceIndicator: {separator: user1, text: "~"}}
  - {name: NV, nameValuePair: {separator: field2}}
  - {name: VR, fields: [{name: K}, {name: V, dataType: variable, variable: {keyField: K}}]}
)", 883);
  const auto& segments = set->getSegments();
  EXPECT_EQ(segments[0]->getSegmentType(), qxSegTypeFieldPresenceIndicator);
  EXPECT_EQ(segments[0]->getPresenceSeparator()->SpecialSeparatorType, qxSepUser1);
  EXPECT_EQ(segments[0]->getPresenceSeparator()->SpecialSeparatorString.str(), u"~");
  EXPECT_EQ(segments[1]->getNameValueSeparator()->SpecialSeparatorType, qxSepField2);
  EXPECT_EQ(segments[2]->getFlags(), SegmentDefn::kHasVariableField);
  EXPECT_EQ(*segments[2]->getVariableKeys(), (std::map<int32_t, int32_t>{{0, 1}}));
}

TEST(SegmentWriterTest, Refusals) {
  struct Case {
    const char* yaml;
    int version;
    const char* says;
  } cases[] = {
      {"{name: A, tag: \"\"}", 516, "'tag'"},
      {"{name: A, ncpdp: true}", 856, "'ncpdp'"},
      {"{name: A, userData: {K: v}}", 854, "'userData'"},
      {"{name: A, presenceIndicator: {text: \"~\"}}", 864, "'presenceIndicator'"},
      {"{name: A, nameValuePair: {text: \"=\"}}", 865, "'nameValuePair'"},
      {"{name: A, presenceIndicator: {text: \"~\"}, nameValuePair: {text: \"=\"}}", 883, "can't hold name-value pairs"},
      {"{name: A, nameValuePair: {separator: field2, text: \"=\"}}", 883, "only with 'separator: string'"},
      {"{name: A, specialSeparator: \"&\"}", 883, "only with 'separator: string'"},
      {"{name: A, tag: \"\\u0100\"}", 883, "byte texts"},
      {"{name: A, matches: [{value: X}]}", 883, "needs a 'path'"},
      {"{name: A, matches: [{path: A.1, value: \"\\u0100\"}]}", 831, "version 832"},
      {"{name: A, colour: red}", 883, "colour"},
      {"{tag: A}", 883, "needs a name"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.yaml);
    EXPECT_NE(compileFailure(std::string("segments: [") + c.yaml + "]", c.version).find(c.says), std::string::npos)
        << compileFailure(std::string("segments: [") + c.yaml + "]", c.version);
  }
  // Names and ids are keys within the set.
  EXPECT_NE(compileFailure("segments: [{name: A}, {name: A}]", 883).find("used twice"), std::string::npos);
  EXPECT_NE(compileFailure("segments: [{name: A, id: 3}, {name: B, id: 3}]", 883).find("already used"), std::string::npos);
  // The gates let the same sources through from their versions on.
  EXPECT_EQ(compileFailure("segments: [{name: A, tag: \"\", ncpdp: true}]", 857), "");
  EXPECT_EQ(compileFailure("segments: [{name: A, matches: [{path: A.1, value: \"\\u0100\"}]}]", 832), "");
}

}  // namespace
}  // namespace vantrelia::compiler
