// Separator lists in the definition language, compiled and read back record by record.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/PcfWriter.h"
#include "compiler/SeparatorWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/PcfMessages.h"
#include "foundation/Enumerations.h"
#include "foundation/InvalidFile.h"
#include "support/CompilerTesting.h"
#include "tool/SeparatorJson.h"

namespace vantrelia::compiler {
namespace {

using Separators = std::vector<std::unique_ptr<SeparatorDefn>>;

// Reads `count` records and checks that nothing is left behind them.
Separators loadRecords(const PcfWriter& out, int32_t count, int version) {
  std::istringstream source(std::string(out.bytes().begin(), out.bytes().end()));
  DefinitionFile file(source);
  Separators result;
  for (int32_t i = 0; i < count; ++i) {
    result.push_back(std::make_unique<SeparatorDefn>());
    result.back()->load(file, version);
  }
  const auto atEnd = ::testing::Throws<InvalidFile>(::testing::Field(&InvalidFile::message, messages::kUnexpectedEndOfInput));
  EXPECT_THAT([&] { file.readByte(); }, atEnd) << "bytes left behind the records at version " << version;
  return result;
}

Separators compileAndLoad(const std::string& yaml, int version) {
  CompileContext context(version);
  PcfWriter out;
  const int32_t count = SeparatorWriter::writeList(SourceNode(YAML::Load(yaml), "separators"), context, out);
  return loadRecords(out, count, version);
}

TEST(SeparatorWriterTest, PortableListRoundTripsAtEveryVersion) {
  const char* const list = R"(
segment: "\r"
field1: '|'
repeat: {value: '~', replacement: '\R\'}
field2: {value: '^', fromField: MSH.2, position: 0}
decimal: '\x2E'
)";
  for (int version : {512, 783, 784, 864, 867, 883}) {
    const Separators s = compileAndLoad(list, version);
    ASSERT_EQ(s.size(), 7u) << "records up to field2 at version " << version;
    EXPECT_EQ(s[qxSepSegment]->getValue().str(), u"\r");
    EXPECT_EQ(s[qxSepSegment]->getFlags(), 0x22u);
    EXPECT_EQ(s[qxSepRepeat]->getTerminatorReplacement().str(), u"\\R\\");
    EXPECT_EQ(s[qxSepDecimal]->getValue().str(), u".") << "escapes expand at load";
    EXPECT_EQ(s[qxSepField2]->getFlags(), 0x24u);
    EXPECT_EQ(s[qxSepField2]->fieldPathText(), "MSH.2");
    EXPECT_EQ(s[qxSepNull]->getFlags(), 0x21u) << "not named: as if untouched";
    EXPECT_TRUE(s[qxSepFiller]->getValue().empty() && s[qxSepFiller]->getReplacementValue().empty());
  }
  for (const char* nothing : {"{}", "~"}) EXPECT_TRUE(compileAndLoad(nothing, 883).empty()) << nothing;
}

TEST(SeparatorWriterTest, UntouchedRecordLeavesTheDefaultsAtEveryVersion) {
  for (int version : {512, 783, 784, 863, 864, 866, 867, 883}) {
    PcfWriter out;
    SeparatorWriter::writeUntouched(out, version);
    const Separators s = loadRecords(out, 1, version);
    EXPECT_EQ(s[0]->getFlags(), SeparatorDefn::kDefaultFlags) << version;
    EXPECT_TRUE(s[0]->getValue().empty() && s[0]->getTerminatorReplacement().empty()) << version;
  }
}

TEST(SeparatorWriterTest, StylesVariablesAndKinds) {
  const Separators s = compileAndLoad(R"(
segment: {value: "\r", style: terminator}
repeat: {value: '~', style: all}
field1: {value: '|', style: initiator}
field3: {value: '/', variable: {initiator: '(', terminator: '\x29', terminatorReplacement: '\)'}}
user1: {kind: 1, replacement: x}
user2: {kind: 7, value: '#'}
)", 883);
  ASSERT_EQ(s.size(), 12u);
  const std::pair<int, uint32_t> flags[] = {{qxSepSegment, 0x42}, {qxSepRepeat, 0x72}, {qxSepField1, 0x12}, {qxSepField3, 0xA2}};
  for (const auto& [index, expected] : flags) EXPECT_EQ(s[index]->getFlags(), expected) << "separator " << index;
  EXPECT_EQ(s[qxSepField3]->getTerminator().str(), u")");
  EXPECT_EQ(s[qxSepField3]->getTerminatorReplacement().str(), u"\\)");
  EXPECT_EQ(s[qxSepUser1]->getFlags(), 0x21u) << "kind 1 without path or value is fixed";
  EXPECT_TRUE(s[qxSepUser1]->getReplacementValue().empty());
  EXPECT_EQ(s[qxSepUser2]->getValue().str(), u"#");

  // What old files make of the segment and the first field level may be stated there.
  EXPECT_EQ(compileAndLoad("{segment: {value: a, style: terminator}, field1: {value: b, style: initiator}}", 512).size(), 6u);
  EXPECT_EQ(compileAndLoad("{repeat: {value: '~', variable: {initiator: '<'}}}", 864)[qxSepRepeat]->getFlags(), 0xA2u);
}

TEST(SeparatorWriterTest, RefusalsNameTheLine) {
  const struct {
    int version;
    const char* yaml;
    const char* failure;
  } cases[] = {
      {783, "segment: '\\r'\nrepeat: {value: '~', style: terminator}", "line 2: 'style' of separator 'repeat' needs format version 784"},
      {783, "field1: '|'\nsegment: {value: a, style: separator}", "line 2: 'style' of separator 'segment' needs"},
      {863, "repeat:\n  value: '~'\n  variable: {initiator: '('}", "line 3: 'variable' of separator 'repeat' needs format version 864"},
      {866, "repeat:\n  variable:\n    terminatorReplacement: x", "line 3: 'terminatorReplacement' of 'variable' of separator 'repeat' needs format version 867"},
      {883, "field1: '|'\nfield6: '^'", "line 2: unknown separator 'field6' in separators"},
      {883, "field1: '|'\nfield1: '^'", "line 2: separator 'field1' is given twice"},
      {883, "field1: 'é'", "line 1: 'field1' of separators has a character that the file's byte texts can't carry"},
      {883, "repeat:\n  replacement: \"\\0\"", "line 2: 'replacement' of separator 'repeat' can't hold a zero character"},
      {883, "field2:\n  fromField: MSH.2\n  variable: {}", "line 3: a separator read from a field ('fromField') can't be variable"},
      {883, "field2:\n  value: '^'\n  position: 1", "line 3: 'position' of separator 'field2' goes with 'fromField'"},
      {883, "field2: {kind: 0,\n  fromField: MSH.2}", "line 2: 'fromField' of separator 'field2' is written only for kind 1"},
      {883, "field2: {preset: '^'}", "line 1: unknown key 'preset' in separator 'field2'"},
      {883, "field2: {style: both}", "line 1: 'style' of separator 'field2' must be initiator, separator, terminator or all"},
      {883, "field2:\nfield3: '^'", "line 1: separator 'field2' must be a text or a mapping"},
      {883, "field2: ['^']", "line 1: separator 'field2' must be a text or a mapping"},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(testing::failsWith(testing::compileError([&] { compileAndLoad(c.yaml, c.version); }), c.failure)) << c.yaml;
  }
}

TEST(SeparatorWriterTest, JsonNamesTheModelFields) {
  const Separators s = compileAndLoad("field2: {value: '^', replacement: '\\S\\', fromField: MSH.2, position: 1}", 883);
  EXPECT_EQ(tool::toJson(*s[qxSepField2]).dump(),
            R"({"flags":36,"Value":"^","Initiator":"","Terminator":"","ReplacementValue":"\\S\\",)"
            R"("TerminatorReplacement":"\\S\\","FieldPath":"MSH.2","Position":1})");
}

}  // namespace
}  // namespace vantrelia::compiler
