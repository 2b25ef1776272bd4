// `parse` through the tool: the JSON Lines shape, the definition chosen by the input, byte offsets
// in every encoding, skipped text, the text form, the summary and the exit codes.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "support/ReadFile.h"
#include "support/TempDir.h"
#include "support/ToolInputs.h"
#include "support/ToolRun.h"

namespace vantrelia::testing {
namespace {

std::vector<nlohmann::json> jsonLines(const std::string& out) {
  std::vector<nlohmann::json> lines;
  std::istringstream in(out);
  for (std::string line; std::getline(in, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

// The value of the first node of that name below `node`, or null.
nlohmann::json findValue(const nlohmann::json& node, const std::string& name) {
  if (node["name"] == name && node.contains("value")) return node["value"];
  for (const auto& child : node["children"]) {
    nlohmann::json found = findValue(child, name);
    if (!found.is_null()) return found;
  }
  return nullptr;
}

// Every node has the members of its kind, and its present children come in index order.
void expectNodeShape(const nlohmann::json& node) {
  ASSERT_TRUE(node["name"].is_string());
  ASSERT_TRUE(node["index"].is_number_integer());
  ASSERT_TRUE(node["nodeType"].is_number_integer());
  EXPECT_EQ(node.contains("value"), node["nodeType"] == 0) << node["name"];
  int last = -1;
  for (const auto& child : node["children"]) {
    EXPECT_GT(child["index"].get<int>(), last) << node["name"];
    last = child["index"].get<int>();
    expectNodeShape(child);
  }
}

TEST(ToolParseTest, JsonLinesOfEachExampleUnderTheChosenDefinition) {
  TempDir dir;
  struct Case {
    const char* example;
    const char* pcf;  // chosen by the first characters
    const char* set;
    const char* message;
    const char* field;
    const char* value;
  } cases[] = {
      {"adt-a04.hl7", "hl7-v2.5", "HL7_2_5", "ADT_A01", "Surname", "DOE"},
      {"orders-d96a.edi", "edifact_d96a", "EDIFACT_INTERCHANGE", "INTERCHANGE", "PartyQualifier", "BY"},
      {"eligibility-270.x12", "x12", "X12_005010_INTERCHANGE", "INTERCHANGE", "ISA06", "SUBMITTER      "},
  };
  for (const Case& c : cases) {
    const std::string path = sourcePath(std::string("examples/") + c.example);
    const ToolRun run = runTool(dir, "parse --json " + path);
    const auto lines = jsonLines(run.out);
    ASSERT_FALSE(lines.empty()) << c.example << run.err;
    const nlohmann::json& first = lines.front();
    EXPECT_EQ(first["input"], path);
    EXPECT_EQ(first["pcf"], c.pcf);
    EXPECT_EQ(first["offset"], 0);
    EXPECT_EQ(first["set"], c.set);
    EXPECT_EQ(first["message"], c.message);
    EXPECT_EQ(first["tree"]["name"], c.message);
    EXPECT_TRUE(first["findings"].is_array());
    expectNodeShape(first["tree"]);
    EXPECT_EQ(findValue(first["tree"], c.field), c.value) << c.example;
  }
}

TEST(ToolParseTest, BatchWithJunkBeforeMessagesInEveryEncoding) {
  TempDir dir;
  const std::string hl7 = replaceAll(exampleText("adt-a04.hl7"), "DOE^JANE", "DÖE^JANE");
  // Text after a message is read as segments of it that it has no place for; text before the first
  // message is skipped.
  const std::string junk = "-- cut here --\r";
  const std::string utf8 = junk + hl7 + hl7;
  struct Case {
    const char* name;
    std::string bytes;
    size_t bom;
    size_t unit;  // bytes per character of the ASCII text
    size_t accent;  // bytes of the Ö
  } cases[] = {
      {"utf8.hl7", utf8, 0, 1, 2},
      {"bom.hl7", "\xEF\xBB\xBF" + utf8, 3, 1, 2},
      {"latin1.hl7", toLatin1(utf8), 0, 1, 1},
      {"utf16.hl7", toUtf16LE(utf8), 2, 2, 2},
  };
  for (const Case& c : cases) {
    const ToolRun run = runTool(dir, "parse --json --pcf default " + dir.write(c.name, c.bytes));
    EXPECT_EQ(run.exitCode, 3) << c.name << run.err;
    const auto lines = jsonLines(run.out);
    ASSERT_EQ(lines.size(), 3u) << c.name << run.out;
    const size_t messageBytes = (hl7.size() - 2) * c.unit + c.accent;
    EXPECT_EQ(lines[0]["skipped"], true) << c.name;
    EXPECT_EQ(lines[0]["offset"], c.bom) << c.name;
    EXPECT_EQ(lines[0]["length"], junk.size() * c.unit) << c.name;
    EXPECT_EQ(lines[1]["offset"], c.bom + junk.size() * c.unit) << c.name;
    EXPECT_EQ(lines[1]["length"], messageBytes) << c.name;
    EXPECT_EQ(lines[2]["offset"], c.bom + junk.size() * c.unit + messageBytes) << c.name;
    for (const size_t i : {1, 2}) EXPECT_EQ(findValue(lines[i]["tree"], "FamilyName"), "DÖE") << c.name;
  }
}

TEST(ToolParseTest, LineEndsAndFramesParseAlike) {
  TempDir dir;
  const std::string hl7 = exampleText("adt-a04.hl7");
  for (const auto& [name, bytes] : {std::pair{"lf.hl7", replaceAll(hl7 + hl7, "\r", "\n")},
                                   {"crlf.hl7", replaceAll(hl7 + hl7, "\r", "\r\n")},
                                   {"mllp.hl7", "\x0B" + hl7 + "\x1C\r\x0B" + hl7 + "\x1C\r"}}) {
    const ToolRun run = runTool(dir, "parse --json --pcf default " + dir.write(name, bytes));
    EXPECT_EQ(run.exitCode, 0) << name << run.err;
    const auto lines = jsonLines(run.out);
    ASSERT_EQ(lines.size(), 2u) << name;
    for (const auto& line : lines) {
      EXPECT_EQ(line["message"], "ADT_A04") << name;
      EXPECT_TRUE(line["findings"].empty()) << name << line["findings"];
    }
  }
}

TEST(ToolParseTest, TextFormShowsTheDefinitionTheTreeAndFindings) {
  TempDir dir;
  const std::string path = sourcePath("examples/adt-a04.hl7");
  const ToolRun run = runTool(dir, "parse --pcf default " + path);
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "# " + path + ": parsed with default");
  EXPECT_NE(run.out.find("\nmessage HL7/ADT_A04 at byte 0, 292 bytes\n  ADT_A04 [0]\n    MSH [0]\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\n      PatientName [4]\n        PatientName [0]\n          FamilyName [0] = DOE\n"), std::string::npos) << run.out;

  // A segment the message has no place for is a finding, shown under the tree.
  const ToolRun odd = runTool(dir, "parse --pcf default -", exampleText("adt-a04.hl7") + "ZZZ|1\r");
  EXPECT_EQ(odd.exitCode, 3);
  EXPECT_NE(odd.out.find("  findings:\n    error 1003 segment "), std::string::npos) << odd.out;
  EXPECT_NE(odd.out.find("Unknown segment, ignored"), std::string::npos) << odd.out;
}

// A transaction set inside an interchange records its findings on itself; they are shown with the
// interchange's, with the transaction's place, and they decide the exit code.
TEST(ToolParseTest, FindingsOfEmbeddedMessagesAreShown) {
  TempDir dir;
  const std::string sample = readFile(sourcePath("tests/data/standards/835-three-claims.x12"));
  const std::string rendering = "NM1*82*";
  ASSERT_NE(sample.find(rendering), std::string::npos);
  std::string changed = sample;
  changed.replace(sample.find(rendering), rendering.size(), "NM1*ZZ*");
  const std::string input = dir.write("835.x12", changed);

  const ToolRun summary = runTool(dir, "parse --summary --pcf x12 " + input);
  EXPECT_EQ(summary.exitCode, 3);
  EXPECT_NE(summary.out.find("findings: 1023 x1"), std::string::npos) << summary.out;
  const ToolRun text = runTool(dir, "parse --pcf x12 " + input);
  EXPECT_NE(text.out.find("  findings:\n    error 1023 "), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("GS_LOOP[0]/TRANSACTION[0]"), std::string::npos) << text.out;
}

TEST(ToolParseTest, SummaryCountsMessagesSegmentsAndSkippedBytes) {
  TempDir dir;
  const std::string hl7 = exampleText("adt-a04.hl7");
  const std::string input = dir.write("batch.hl7", "junk\r" + hl7 + hl7);
  const ToolRun run = runTool(dir, "parse --summary --pcf default " + input);
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.out.rfind(input + ": default, 2 messages (HL7/ADT_A04 2), 14 segments, 5 bytes skipped, findings: none, ", 0), 0u)
      << run.out;
  EXPECT_NE(run.out.find(" MB/s\n"), std::string::npos);
}

TEST(ToolParseTest, ExitCodesAndErrors) {
  TempDir dir;
  const std::string good = sourcePath("examples/adt-a04.hl7");
  const std::string missing = dir.path("missing.hl7");
  const std::string badPcf = dir.write("bad.pcf", std::string("not a definition"));
  struct Case {
    std::string arguments;
    int exitCode;
    std::string err;  // the start of stderr
  } cases[] = {
      {"parse " + good, 0, ""},
      {"parse " + missing, 2, "error: " + missing + ": No such file or directory\n"},
      {"parse " + missing + " " + good, 2, "error: " + missing + ": "},
      {"parse --pcf " + badPcf + " " + good, 2, "error: " + badPcf + ": "},
      {"parse --pcf nowhere.pcf " + good, 2, "error: nowhere.pcf: "},
      {"parse --bogus " + good, 1, "error: "},
      {"frobnicate", 1, "error: "},
      {"parse --generic --pcf default " + good, 0, "note: --generic has no effect yet\n"},
  };
  for (const Case& c : cases) {
    const ToolRun run = runTool(dir, c.arguments);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << run.err;
    EXPECT_EQ(run.err.substr(0, c.err.size()), c.err) << c.arguments;
  }
  // The input that can be read is still parsed when another can't.
  EXPECT_NE(runTool(dir, "parse " + missing + " " + good).out.find("message "), std::string::npos);
}

TEST(ToolParseTest, HelpAndVersion) {
  TempDir dir;
  const ToolRun help = runTool(dir, "--help");
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("Example: vantrelia parse examples/adt-a04.hl7"), std::string::npos) << help.out;
  for (const char* command : {"parse", "get", "set", "write", "new", "compile", "inspect"}) {
    const ToolRun commandHelp = runTool(dir, std::string(command) + " --help");
    EXPECT_EQ(commandHelp.exitCode, 0) << command;
    EXPECT_NE(commandHelp.out.find(std::string("Example: vantrelia ") + command), std::string::npos) << command;
  }
  EXPECT_NE(runTool(dir, "parse --help").out.find("MSH/FHS/BHS hl7-v2.5, ISA x12"), std::string::npos);
  const ToolRun version = runTool(dir, "--version");
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_EQ(version.out.rfind("vantrelia ", 0), 0u) << version.out;
}

}  // namespace
}  // namespace vantrelia::testing
