// `get` and `new` through the tool: values per message as text and JSON, paths the definition
// doesn't have, and a new message that parses back.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/TempDir.h"
#include "support/ToolInputs.h"
#include "support/ToolRun.h"

namespace vantrelia::testing {
namespace {

TEST(ToolGetTest, ValuesOfEveryMessageAsTextAndJson) {
  TempDir dir;
  const std::string hl7 = exampleText("adt-a04.hl7");
  const std::string input = dir.write("two.hl7", hl7 + replaceAll(hl7, "MSG00001", "MSG00002"));
  const std::string paths = " MSH/MessageControlId PID/PatientName[0]/FamilyName NK1[3]/SetId";
  const ToolRun text = runTool(dir, "get --pcf default " + input + paths);
  EXPECT_EQ(text.exitCode, 0) << text.err;
  EXPECT_EQ(text.out, "MSG00001\tDOE\t\nMSG00002\tDOE\t\n");

  const ToolRun json = runTool(dir, "get --json --pcf default " + input + paths);
  EXPECT_EQ(json.exitCode, 0) << json.err;
  const auto second = nlohmann::json::parse(json.out.substr(json.out.find('\n') + 1));
  EXPECT_EQ(second["offset"], hl7.size());
  EXPECT_EQ(second["message"], "ADT_A04");
  EXPECT_EQ(second["values"]["MSH/MessageControlId"], "MSG00002");
  EXPECT_TRUE(second["values"]["NK1[3]/SetId"].is_null());
}

TEST(ToolGetTest, APathTheDefinitionLacksIsAnErrorWithTheEngineText) {
  TempDir dir;
  const std::string input = sourcePath("examples/adt-a04.hl7");
  const ToolRun run = runTool(dir, "get --pcf default " + input + " PID/SetId PID/Nope Nope");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.out, "1\t\t\n");
  EXPECT_NE(run.err.find("error: PID/Nope: Child Nope of segment PID not found\n"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("error: Nope: "), std::string::npos) << run.err;
}

TEST(ToolNewTest, NewMessageParsesBackWithItsValues) {
  TempDir dir;
  const ToolRun made = runTool(dir, "new ADT_A04 MSH/MessageControlId=42 PID/PatientName[0]/FamilyName=DOE PID/PatientName[1]/FamilyName=ROE");
  ASSERT_EQ(made.exitCode, 0) << made.err;
  EXPECT_EQ(made.out.rfind("MSH|", 0), 0u) << made.out;

  const ToolRun parsed = runTool(dir, "parse --json --pcf default -", made.out);
  EXPECT_EQ(parsed.exitCode, 0) << parsed.err;
  const auto line = nlohmann::json::parse(parsed.out);
  EXPECT_EQ(line["message"], "ADT_A04");
  const ToolRun got = runTool(dir, "get --pcf default - MSH/MessageControlId PID/PatientName[0]/FamilyName PID/PatientName[1]/FamilyName", made.out);
  EXPECT_EQ(got.out, "42\tDOE\tROE\n");
}

TEST(ToolNewTest, UnknownMessagesAndPathsAreNamed) {
  TempDir dir;
  struct Case {
    const char* arguments;
    int exitCode;
    const char* err;
  } cases[] = {
      {"new NOPE", 1, "error: NOPE: no such message in default\n"},
      {"new ADT_A04 PID/Nope=1", 1, "error: PID/Nope: Child Nope of segment PID not found\n"},
      {"new ADT_A04 =1", 1, "error: not PATH=VALUE: =1\n"},
      {"new --pcf nowhere.pcf ADT_A04", 2, "error: nowhere.pcf: "},
  };
  for (const Case& c : cases) {
    const ToolRun run = runTool(dir, c.arguments);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments;
    EXPECT_EQ(run.err.substr(0, std::string(c.err).size()), c.err) << c.arguments << run.err;
    EXPECT_TRUE(run.out.empty()) << c.arguments;
  }
}

}  // namespace
}  // namespace vantrelia::testing
