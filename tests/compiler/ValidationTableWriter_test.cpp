// Validation tables and error settings in the definition language, written and read back by the
// engine's own records.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/PcfWriter.h"
#include "compiler/ValidationErrorSettingWriter.h"
#include "compiler/ValidationTableWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/ValidationErrorSettingDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "support/CompilerTesting.h"

namespace vantrelia::compiler {
namespace {

constexpr int32_t kSentinel = 0x5E5E5E5E;

// Writes the tables of a set source as the set writer will, and loads them back; or, for settings,
// writes and loads the list.
struct RoundTrip {
  RoundTrip(const std::string& text, int version) : set(YAML::Load(text), "message set 'S'"), context(version) {}

  std::vector<ValidationTableDefn> tables() {
    const auto sources = set.records("validationTables", "validation table");
    const bool descriptions = ValidationTableWriter::carriesDescriptions(sources, context);
    for (const auto& table : sources) ValidationTableWriter::write(table, context, out, descriptions);
    std::vector<ValidationTableDefn> result(sources.size());
    read([&](InputStream& in) {
      for (auto& table : result) table.load(in, context.version(), descriptions);
    });
    return result;
  }

  std::vector<ValidationErrorSettingDefn> settings() {
    ValidationErrorSettingWriter::writeList(set, context, out);
    std::vector<ValidationErrorSettingDefn> result;
    read([&](InputStream& in) {
      if (context.version() < 869) return;
      result.resize(static_cast<size_t>(in.readInt()));
      for (auto& setting : result) setting.load(in);
    });
    return result;
  }

  void read(const std::function<void(InputStream&)>& load) {
    const auto bytes = out.i32(kSentinel).take();
    std::istringstream source(std::string(bytes.begin(), bytes.end()));
    DefinitionFile file(source);
    load(file);
    EXPECT_EQ(file.readInt(), kSentinel) << "read to the exact end";
  }

  SourceNode set;
  CompileContext context;
  PcfWriter out;
};

using testing::compileError;
using testing::failsWith;
using testing::versionGate;

TEST(ValidationTableWriterTest, TablesRoundTripInEachTextForm) {
  for (const int version : {831, 832, 880, 881, 883}) {
    SCOPED_TRACE(version);
    const std::string description = version >= 881 ? ", description: Other" : "";
    const std::string source = "validationTables:\n  - {name: Sex, entries: [M, {value: \"\\x7F\"" + description + "}]}\n  - {name: Empty}";
    const auto tables = RoundTrip(source, version).tables();
    ASSERT_EQ(tables.size(), 2u);
    EXPECT_EQ(tables[0].getName(), "Sex");
    ASSERT_EQ(tables[0].getEntryCount(), 2);
    EXPECT_EQ(tables[0].getEntry(1).getValue().str(), u"\x7F");
    EXPECT_EQ(tables[0].getEntry(1).getDescription().str(), version >= 881 ? u"Other" : u"");
    EXPECT_EQ(tables[1].getEntryCount(), 0);
  }
  const auto wide = RoundTrip("validationTables: [{name: W, entries: [\"\\u0141\"]}]", 832).tables();
  EXPECT_EQ(wide[0].getEntry(0).getValue().str(), u"\u0141");
}

TEST(ValidationTableWriterTest, MistakesAndVersionLimitsNameTheLine) {
  struct Case {
    int version;
    const char* source;
    std::string error;
  } cases[] = {
      {831, "validationTables:\n  - name: T\n    entries:\n      - a\n      - \"\\u00E9\"",
       "line 5: a value of validation table 'T' has a character that needs format version 832 or later; this file is compiled for version 831"},
      {880, "validationTables:\n  - name: T\n    entries:\n      - value: a\n        description: b",
       "line 5: descriptions of validation table entries need format version 881 or later; this file is compiled for version 880"},
      {883, "validationTables:\n  - entries: [a]", "line 2: validation table 0 needs a name"},
      {883, "validationTables:\n  - name: T\n    entries:\n      - {description: b}", "line 4: an entry of validation table 'T' needs a 'value'"},
      {868, "\nvalidationErrorSettings: {1001: ignore}", versionGate(2, "validationErrorSettings", "message set 'S'", 869, 868)},
      {883, "validationErrorSettings:\n  1000: ignore", "line 2: error number '1000' in 'validationErrorSettings' of message set 'S' must lie between 1001 and 1052"},
      {883, "validationErrorSettings:\n  1053: ignore", "line 2: error number '1053'"},
      {883, "validationErrorSettings:\n  1001: 3", "line 2: the severity of error 1001 in 'validationErrorSettings' of message set 'S' must be error, ignore or warning"},
      {883, "validationErrorSettings:\n  1001: error\n  \"1001\": ignore", "line 3: error 1001 is given twice"},
  };
  for (const Case& c : cases) {
    // A set's tables, then its error settings, as the set writer writes them.
    const auto write = [&] {
      RoundTrip(c.source, c.version).tables();
      RoundTrip(c.source, c.version).settings();
    };
    EXPECT_TRUE(failsWith(compileError(write), c.error)) << c.source;
  }
}

TEST(ValidationErrorSettingWriterTest, NumbersFrom1001UpToTheHighestNamed) {
  const auto settings = RoundTrip("validationErrorSettings: {1007: ignore, 1044: warning, 1003: 2}", 869).settings();
  ASSERT_EQ(settings.size(), 44u);
  for (size_t i = 0; i < settings.size(); ++i) {
    const int number = 1001 + static_cast<int>(i);
    EXPECT_EQ(settings[i].getErrorNumber(), number);
    const EVErrType expected = number == 1044 || number == 1003 ? qxVESWarning
                               : number == 1007 || number == 1043 ? qxVESIgnore  // 1043: the engine's own default
                                                                  : qxVESError;
    EXPECT_EQ(settings[i].getErrorType(), expected) << number;
  }
  EXPECT_TRUE(RoundTrip("{}", 883).settings().empty());
  EXPECT_TRUE(RoundTrip("validationErrorSettings: {}", 868).settings().empty()) << "nothing written below 869";
}

}  // namespace
}  // namespace vantrelia::compiler
