// The command-line tool as a user runs it: compile, inspect, and what it says when things fail.

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "compiler/PcfWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/ValidationErrorSettingDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "support/ReadFile.h"
#include "support/TempDir.h"
#include "support/ToolRun.h"
#include "tool/ValidationTableJson.h"

namespace vantrelia {
namespace {

using testing::runTool;
using testing::ToolRun;

TEST(VantreliaToolTest, InspectShowsWhatEachVersionCarries) {
  testing::TempDir dir;
  struct Case {
    int version;
    const char* source;
  } cases[] = {
      {512, "{}"},
      {865, "userData: {Owner: ops}\nhasVariableFields: true"},
      {866, "userData: {Owner: ops}"},
      {880, "userData: {Owner: ops}\nflags: 4"},
      {883, "userData: {Owner: ops}\nflags: 3"},
  };
  for (const Case& c : cases) {
    const std::string source = dir.write("source.yaml", std::string(c.source));
    const std::string pcf = dir.path("out-" + std::to_string(c.version) + ".pcf");
    const ToolRun compiled = runTool(dir, "compile " + source + " -o " + pcf + " --pcf-version " + std::to_string(c.version));
    ASSERT_EQ(compiled.exitCode, 0) << compiled.err;

    const ToolRun inspected = runTool(dir, "inspect " + pcf + " --json");
    ASSERT_EQ(inspected.exitCode, 0) << inspected.err;
    const auto json = nlohmann::json::parse(inspected.out);
    EXPECT_EQ(json["version"], c.version);
    EXPECT_EQ(json.contains("header"), c.version >= 866) << c.version;
    EXPECT_EQ(json["flags"], c.version >= 880 ? (c.version == 880 ? 4 : 3) : 0) << c.version;
    EXPECT_EQ(json["hasVariableFields"], c.version == 865) << c.version;
    if (c.version >= 855) {
      EXPECT_EQ(json["userDataKeys"], nlohmann::json::array({"Owner"})) << c.version;
      EXPECT_EQ(json["userData"]["0"], "ops") << c.version;
    } else {
      EXPECT_TRUE(json["userDataKeys"].empty());
    }
    EXPECT_TRUE(json["messageSets"].is_array());

    const ToolRun text = runTool(dir, "inspect " + pcf);
    ASSERT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("PCF format version " + std::to_string(c.version)), std::string::npos) << text.out;
    EXPECT_EQ(text.out.find("header PCFFILE") != std::string::npos, c.version >= 866) << text.out;
  }
}

TEST(VantreliaToolTest, LoadFailuresPrintTheEngineTextAndExit2) {
  testing::TempDir dir;
  using compiler::PcfWriter;
  struct Case {
    std::vector<uint8_t> bytes;
    const char* text;
  } cases[] = {
      {PcfWriter().i32(884).bytes(), "The PCF is newer than this version of Vantrelia"},
      {PcfWriter().i32(511).bytes(), "Invalid version number in PCF"},
      {PcfWriter().i32(866).i32(0).bytes(), "Corrupt PCF: Header is invalid"},
      {PcfWriter().i32(883).text8("PCFFILE").i32(-3).bytes(), "PCF is corrupt: Invalid number of primitive types"},
      {PcfWriter().i32(883).text8("PCFFILE").i32(0).i32(-3).bytes(), "PCF is corrupt: Invalid number of array types"},
      {PcfWriter().i32(883).text8("PCF").bytes(), "Corrupt PCF: Header is invalid"},
      {PcfWriter().i32(883).text8("PCFFILE").i32(0).bytes(), "Unexpected end of input file"},
  };
  for (const Case& c : cases) {
    const ToolRun run = runTool(dir, "inspect " + dir.write("bad.pcf", c.bytes));
    EXPECT_EQ(run.exitCode, 2) << c.text;
    EXPECT_EQ(run.err, std::string("error: ") + c.text + "\n");
    EXPECT_EQ(run.out, "");
  }
  const ToolRun missing = runTool(dir, "inspect " + dir.path("none.pcf"));
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.err, "error: Input file was not opened\n");
}

// Names in a file are bytes that need not be UTF-8. The JSON view shows each byte that isn't as
// U+FFFD, the text view passes the bytes on; neither may fail the inspection.
TEST(VantreliaToolTest, InspectShowsNamesThatAreNotUtf8) {
  testing::TempDir dir;
  const std::string source = dir.write("types.yaml", std::string("primitiveTypes: [{name: NAME__}]\n"));
  const std::string pcf = dir.path("types.pcf");
  ASSERT_EQ(runTool(dir, "compile " + source + " -o " + pcf).exitCode, 0);
  std::string bytes = testing::readFile(pcf);
  const size_t at = bytes.find("NAME__");
  ASSERT_NE(at, std::string::npos);
  struct Case { const char* bytes; const char* shown; } cases[] = {
      {"\xFF\xFE", "NAME\uFFFD\uFFFD"},  // bytes no UTF-8 text holds
      {"\xC3_", "NAME\uFFFD_"},            // a sequence cut short
      {"\xC3\xA9", "NAME\u00E9"},          // valid UTF-8 comes through as it is
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.shown);
    bytes.replace(at + 4, 2, c.bytes);
    const std::string damaged = dir.write("named.pcf", std::vector<uint8_t>(bytes.begin(), bytes.end()));
    const ToolRun json = runTool(dir, "inspect " + damaged + " --json");
    ASSERT_EQ(json.exitCode, 0) << json.err;
    EXPECT_EQ(nlohmann::json::parse(json.out)["primitiveTypes"][0]["Name"], nlohmann::json::parse(std::string("\"") + c.shown + "\""));
    const ToolRun text = runTool(dir, "inspect " + damaged);
    ASSERT_EQ(text.exitCode, 0) << text.err;
    EXPECT_NE(text.out.find(std::string("] NAME") + c.bytes + ":"), std::string::npos) << text.out;
  }
}

TEST(VantreliaToolTest, CompileErrorsAndUsage) {
  testing::TempDir dir;
  const ToolRun bad = runTool(dir, "compile " + dir.write("bad.yaml", std::string("version: 883\nflagz: 1\n")) + " -o " + dir.path("x.pcf"));
  EXPECT_EQ(bad.exitCode, 2);
  EXPECT_NE(bad.err.find("line 2: unknown key 'flagz'"), std::string::npos) << bad.err;

  for (const char* arguments : {"", "inspect", "compile a.yaml", "frobnicate x", "inspect a.pcf --bogus"}) {
    const ToolRun run = runTool(dir, arguments);
    EXPECT_EQ(run.exitCode, 1) << arguments;
    EXPECT_NE(run.err.find("usage: vantrelia"), std::string::npos) << arguments;
  }
}

TEST(VantreliaToolTest, InspectShowsTheTypeTables) {
  testing::TempDir dir;
  const std::string source = dir.write("types.yaml", std::string(R"(
primitiveTypes:
  - name: ID
    regularExpression: "[A-Z]+"
    allowedSeparators: [repeat]
    escapeCharacters: {start: user1, end: user2}
    characterRanges: {allowed: ["0020-007E"], excluded: ["\""]}
  - {name: Amount, id: 9, baseType: strictReal, plainAlias: true}
arrayTypes:
  - {name: IDs, dataType: ID, separator: repeat}
  - {name: Parts, ownSeparator: "~"}
)"));
  const std::string pcf = dir.path("types.pcf");
  const ToolRun compiled = runTool(dir, "compile " + source + " -o " + pcf);
  ASSERT_EQ(compiled.exitCode, 0) << compiled.err;

  const ToolRun inspected = runTool(dir, "inspect " + pcf + " --json");
  ASSERT_EQ(inspected.exitCode, 0) << inspected.err;
  const auto json = nlohmann::json::parse(inspected.out);
  ASSERT_EQ(json["primitiveTypes"].size(), 2u);
  const auto& id = json["primitiveTypes"][0];  // in id order: ID got 1, Amount has 9
  EXPECT_EQ(id["Name"], "ID");
  EXPECT_EQ(id["id"], 1);
  EXPECT_EQ(id["BaseType"], 4);
  EXPECT_EQ(id["RegularExpression"], "[A-Z]+");
  EXPECT_EQ(id["separatorAllowed"].size(), 22u);
  EXPECT_EQ(id["separatorAllowed"][1], true);
  EXPECT_EQ(id["flags"], 0x0C);
  EXPECT_EQ(id["StartEscapeCharacter"], 10);
  EXPECT_EQ(id["EndEscapeCharacter"], 11);
  EXPECT_EQ(id["characterRanges"]["allowedRanges"][0], nlohmann::json({{"Allowed", true}, {"StartChar", 32}, {"EndChar", 126}}));
  EXPECT_EQ(id["characterRanges"]["excludedRanges"][0]["StartChar"], 34);
  const auto& amount = json["primitiveTypes"][1];
  EXPECT_EQ(amount["id"], 9);
  EXPECT_EQ(amount["flags"], 0x02);
  EXPECT_TRUE(amount["characterRanges"].is_null());
  ASSERT_EQ(json["arrayTypes"].size(), 2u);
  EXPECT_EQ(json["arrayTypes"][0]["CustomType"], "ID") << "a pointer shows as the name of what it points to";
  EXPECT_EQ(json["arrayTypes"][0]["DataType"], 9);
  EXPECT_EQ(json["arrayTypes"][0]["ArraySeparator"], 1);
  EXPECT_TRUE(json["arrayTypes"][1]["CustomType"].is_null());
  EXPECT_EQ(json["arrayTypes"][1]["ArraySeparator"], -1);
  EXPECT_EQ(json["arrayTypes"][1]["ownSeparator"], "~");

  const ToolRun text = runTool(dir, "inspect " + pcf);
  ASSERT_EQ(text.exitCode, 0);
  for (const char* line : {"  [1] ID: string, flags 0x0000000C, allowed separators repeat, expression \"[A-Z]+\", escapes "
                           "user1 to user2, allowed ranges 0020-007E, excluded ranges 0022\n",
                           "  [9] Amount: strictReal, plain alias\n", "  [2] IDs: items of ID (custom), separator repeat\n",
                           "  [3] Parts: items of string, own separator \"~\"\n"})
    EXPECT_NE(text.out.find(line), std::string::npos) << line << "\nin:\n" << text.out;
}

// Tables and settings reach the inspector with their message set; their JSON is ready for it.
TEST(VantreliaToolTest, ValidationTablesAndSettingsAsJson) {
  const auto bytes = compiler::PcfWriter().text8("Sex").i32(2).text16(u"M").text16(u"Male").text16(u"\u00C9").text16(u"").bytes();
  std::istringstream source(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(source);
  ValidationTableDefn table;
  table.load(file, 883, true);
  EXPECT_EQ(tool::toJson(table), nlohmann::ordered_json::parse(R"({"Name": "Sex", "entryCount": 2, "entries": [
      {"value": "M", "description": "Male"}, {"value": "\u00c9", "description": ""}]})"));
  EXPECT_EQ(tool::toJson(ValidationErrorSettingDefn(1043, qxVESWarning)),
            nlohmann::ordered_json::parse(R"({"errorType": 2, "errorNumber": 1043})"));
}

}  // namespace
}  // namespace vantrelia

namespace vantrelia {
namespace {

TEST(VantreliaToolTest, InspectShowsTheOverridesOfEachSegmentItem) {
  testing::TempDir dir;
  const std::string source = dir.write("items.yaml", std::string(R"(
messageSets:
  - name: S
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
    segments:
      - {name: MSH, fields: [{name: Sending}, {name: Control}]}
    messages:
      - name: M
        items:
          - segment: MSH
            overrides: {Control: {required: true, default: X, maxLength: 7}}
          - {segment: MSH, name: "MSH:2"}
)"));
  const std::string pcf = dir.path("items.pcf");
  ASSERT_EQ(runTool(dir, "compile " + source + " -o " + pcf).exitCode, 0);
  const ToolRun inspected = runTool(dir, "inspect " + pcf + " --json");
  ASSERT_EQ(inspected.exitCode, 0) << inspected.err;
  const auto items = nlohmann::json::parse(inspected.out)["messageSets"][0]["messages"][0]["items"];
  ASSERT_EQ(items.size(), 2u);
  const auto& overrides = items[0]["fieldInstances"];
  ASSERT_TRUE(overrides.is_object()) << items[0];
  EXPECT_EQ(overrides["count"], 2);
  EXPECT_TRUE(overrides["entries"][0].is_null());
  EXPECT_EQ(overrides["entries"][1]["Required"], true);
  EXPECT_EQ(overrides["entries"][1]["DefaultValue"], "X");
  EXPECT_EQ(overrides["entries"][1]["MaxLength"], 7);
  // An item without overrides lays nothing over any field.
  for (const auto& entry : items[1]["fieldInstances"]["entries"]) EXPECT_TRUE(entry.is_null()) << items[1];

  const ToolRun text = runTool(dir, "inspect " + pcf);
  EXPECT_NE(text.out.find("fieldInstances:\n"), std::string::npos) << text.out;
}

}  // namespace
}  // namespace vantrelia
