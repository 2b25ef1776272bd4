// `write` and `set` through the tool: files come back byte for byte whatever their line ends,
// frames and encoding; `--check` tells where an output would differ; `set` changes what it names.

#include <gtest/gtest.h>

#include "support/ReadFile.h"
#include "support/TempDir.h"
#include "support/ToolInputs.h"
#include "support/ToolRun.h"

namespace vantrelia::testing {
namespace {

struct Variant {
  const char* name;
  const char* pcf;  // "" to let the tool choose
  std::string bytes;
};

// The forms a file of messages comes in, each of which `write` must give back unchanged.
std::vector<Variant> variants() {
  const std::string hl7 = exampleText("adt-a04.hl7");
  const std::string x12 = exampleText("eligibility-270.x12");
  const std::string edifact = exampleText("orders-d96a.edi");
  const std::string accented = replaceAll(hl7, "DOE^JANE", "DÖE^JANE");
  return {
      {"hl7-cr.hl7", "", hl7 + hl7},
      {"hl7-lf.hl7", "default", replaceAll(hl7 + hl7, "\r", "\n")},
      {"hl7-crlf.hl7", "default", replaceAll(hl7 + hl7, "\r", "\r\n")},
      {"hl7-mllp.hl7", "default", "\x0B" + hl7 + "\x1C\r\x0B" + hl7 + "\x1C\r"},
      {"hl7-latin1.hl7", "default", toLatin1(accented)},
      {"hl7-bom.hl7", "default", "\xEF\xBB\xBF" + accented},
      {"hl7-utf16.hl7", "default", toUtf16LE(accented)},
      {"x12.x12", "default", x12},
      {"x12-lines.x12", "default", replaceAll(x12, "~", "~\n")},
      {"x12-crlf-lines.x12", "default", replaceAll(x12.substr(0, x12.size() - 1), "~", "~\r\n")},
      {"edifact.edi", "", edifact},
      {"edifact-lines.edi", "default", replaceAll(edifact, "'", "'\n")},
  };
}

std::string pcfOption(const Variant& variant) {
  return *variant.pcf ? std::string("--pcf ") + variant.pcf + " " : std::string();
}

TEST(ToolWriteTest, EveryFormComesBackByteForByte) {
  TempDir dir;
  for (const Variant& variant : variants()) {
    const std::string input = dir.write(variant.name, variant.bytes);
    const ToolRun written = runTool(dir, "write " + pcfOption(variant) + input + " -o " + dir.path("out"));
    EXPECT_EQ(written.exitCode, 0) << variant.name << written.err;
    EXPECT_EQ(readFile(dir.path("out")), variant.bytes) << variant.name;

    const ToolRun checked = runTool(dir, "write --check " + pcfOption(variant) + input);
    EXPECT_EQ(checked.exitCode, 0) << variant.name << checked.err;
    EXPECT_EQ(checked.out, input + ": identical\n") << variant.name;
  }
}

TEST(ToolWriteTest, EveryBundledExampleChecksIdentical) {
  TempDir dir;
  for (const std::string pcf : {"", "--pcf default "}) {
    for (const char* example : {"adt-a04.hl7", "orders-d96a.edi", "eligibility-270.x12"}) {
      const std::string path = sourcePath(std::string("examples/") + example);
      const ToolRun checked = runTool(dir, "write --check " + pcf + path);
      EXPECT_EQ(checked.exitCode, 0) << pcf << example << checked.out << checked.err;
      EXPECT_EQ(checked.out, path + ": identical\n");
    }
  }
}

TEST(ToolWriteTest, TextBetweenMessagesIsKeptAndReported) {
  TempDir dir;
  const std::string hl7 = exampleText("adt-a04.hl7");
  const std::string bytes = "not a message\r" + hl7 + hl7;
  const std::string input = dir.write("junk.hl7", bytes);
  const ToolRun written = runTool(dir, "write --pcf default " + input);
  EXPECT_EQ(written.exitCode, 3);
  EXPECT_EQ(written.out, bytes);
}

TEST(ToolWriteTest, CheckGivesTheFirstDifferenceAndExits4) {
  TempDir dir;
  // Written the engine's way, the required segments the message lacks are added after MSH.
  const std::string text = "MSH|^~\\&|A||||||ADT^A04|1|P|2.5\rPID|1||||DOE^JANE\r";
  const std::string input = dir.write("short.hl7", text);
  const ToolRun checked = runTool(dir, "write --check --normalize --pcf default " + input);
  EXPECT_EQ(checked.exitCode, 4) << checked.err;
  EXPECT_EQ(checked.out, input + ": differs at byte " + std::to_string(text.find("PID")) + "\n");
  const ToolRun normalized = runTool(dir, "write --normalize --pcf default " + input);
  EXPECT_EQ(normalized.exitCode, 0);
  EXPECT_EQ(normalized.out.substr(0, text.find("PID")), text.substr(0, text.find("PID")));
  EXPECT_NE(normalized.out, text);
}

TEST(ToolSetTest, SetThenGetKeepsTheRestOfTheFile) {
  TempDir dir;
  const std::string hl7 = exampleText("adt-a04.hl7");
  struct Case {
    const char* name;
    std::string bytes;
    std::string expected;  // the file with the new name
  } cases[] = {
      {"lf.hl7", replaceAll(hl7, "\r", "\n"), replaceAll(replaceAll(hl7, "\r", "\n"), "DOE^JANE", "RÖE^JANE")},
      // Latin-1 shows only in a character that isn't valid UTF-8: an ASCII file is UTF-8.
      {"latin1.hl7", toLatin1(replaceAll(hl7, "JOHN", "JÖHN")), toLatin1(replaceAll(replaceAll(hl7, "JOHN", "JÖHN"), "DOE^JANE", "RÖE^JANE"))},
      {"bom.hl7", "\xEF\xBB\xBF" + hl7, "\xEF\xBB\xBF" + replaceAll(hl7, "DOE^JANE", "RÖE^JANE")},
  };
  for (const Case& c : cases) {
    const std::string input = dir.write(c.name, c.bytes);
    const std::string output = dir.path(std::string("set-") + c.name);
    const ToolRun set = runTool(dir, "set --pcf default " + input + " 'PID/PatientName[0]/FamilyName=RÖE' -o " + output);
    ASSERT_EQ(set.exitCode, 0) << c.name << set.err;
    EXPECT_EQ(readFile(output), c.expected) << c.name;

    const ToolRun got = runTool(dir, "get --pcf default " + output + " PID/PatientName[0]/FamilyName PID/PatientName[0]/GivenName");
    EXPECT_EQ(got.exitCode, 0) << c.name << got.err;
    EXPECT_EQ(got.out, "RÖE\tJANE\n") << c.name;
  }
}

TEST(ToolSetTest, AddsARepeatThatIsNotThereYet) {
  TempDir dir;
  const std::string input = dir.write("a.hl7", exampleText("adt-a04.hl7"));
  const ToolRun set = runTool(dir, "set --pcf default " + input + " PID/PatientName[1]/FamilyName=ROE -o " + dir.path("out"));
  ASSERT_EQ(set.exitCode, 0) << set.err;
  EXPECT_NE(readFile(dir.path("out")).find("|DOE^JANE^Q~ROE|"), std::string::npos) << readFile(dir.path("out"));
}

TEST(ToolSetTest, ErrorsNameThePathOrTheArgument) {
  TempDir dir;
  const std::string input = dir.write("a.hl7", exampleText("adt-a04.hl7"));
  struct Case {
    std::string arguments;
    int exitCode;
    std::string err;
  } cases[] = {
      {"PID/Nope=1", 1, "error: PID/Nope: Child Nope of segment PID not found\n"},
      {"PID/SetId", 1, "error: not PATH=VALUE: PID/SetId\n"},
  };
  for (const Case& c : cases) {
    const ToolRun set = runTool(dir, "set --pcf default " + input + " " + c.arguments);
    EXPECT_EQ(set.exitCode, c.exitCode) << c.arguments;
    EXPECT_EQ(set.err, c.err) << c.arguments;
  }
}

}  // namespace
}  // namespace vantrelia::testing
