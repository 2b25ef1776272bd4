// Every fixed text the engine can hand a host is provoked by some test. The texts live as constants
// in the engine's message headers; a test provokes one when it names the constant
// (messages::kName) or quotes its text. This test reads the headers and the test sources, so that
// a constant added without a test fails here.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/ReadFile.h"

namespace vantrelia {
namespace {

namespace fs = std::filesystem;
using testing::readFile;

// Texts of parts not built yet: no engine code throws them, so no test can provoke them. An entry
// leaves this list when the engine first uses its constant; from then on a test must provoke it.
const std::set<std::string> kReserved = {
    // Nodes of messages and segments without a definition.
    "kChildNotFoundInUnknownMessage", "kChildNotFoundInUnknownSegment", "kIndexInvalid", "kNoClosingBracketInIndex",
    "kPathNull",
    // The parser's field checks.
    "kInvalidCharactersInField",
};

// The folders of the engine library, whose headers hold the texts a host sees.
constexpr const char* kEngineFolders[] = {"foundation", "definitions", "parsing", "elements", "validation", "metaviewer"};

struct TextConstant {
  std::string name;
  std::string literal;  // as written between the quotes, escapes and all
  std::string header;
};

fs::path sourceDir() { return fs::path(VANTRELIA_SOURCE_DIR); }

bool isMessageHeader(const fs::path& path) {
  const std::string name = path.filename().string();
  return name.size() > 10 && name.ends_with("Messages.h");
}

// The sources below `folder` whose file name passes `keep`.
std::vector<fs::path> sourcesUnder(const fs::path& folder, bool (*keep)(const fs::path&)) {
  std::vector<fs::path> found;
  if (!fs::is_directory(folder)) return found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string extension = entry.path().extension().string();
    if (entry.is_regular_file() && (extension == ".h" || extension == ".cpp") && keep(entry.path())) found.push_back(entry.path());
  }
  return found;
}

// The text constants of every message header, once per name (a text shared by two subsystems may
// be defined in both). A definition this reader can't take apart fails the test rather than
// slipping through unchecked.
std::vector<TextConstant> textConstants(std::vector<std::string>& headers) {
  static const std::regex definition(R"re(inline\s+constexpr\s+const\s+char\s*\*\s*(k\w+)\s*=\s*"((?:[^"\\]|\\.)*)"\s*;)re");
  static const std::regex anyDefinition(R"re(constexpr\s+const\s+char)re");
  std::vector<TextConstant> constants;
  std::set<std::string> seen;
  for (const char* folder : kEngineFolders) {
    for (const fs::path& path : sourcesUnder(sourceDir() / folder, isMessageHeader)) {
      const std::string header = fs::relative(path, sourceDir()).string();
      headers.push_back(header);
      const std::string text = readFile(path);
      const auto all = std::distance(std::sregex_iterator(text.begin(), text.end(), anyDefinition), std::sregex_iterator());
      long read = 0;
      for (auto it = std::sregex_iterator(text.begin(), text.end(), definition); it != std::sregex_iterator(); ++it, ++read)
        if (seen.insert((*it)[1]).second) constants.push_back({(*it)[1], (*it)[2], header});
      EXPECT_EQ(read, all) << header << " defines a text in a form this test doesn't read: one literal per constant";
    }
  }
  return constants;
}

// The whole text of the sources, one string per file, with `skip` left out.
std::vector<std::string> contentsOf(const std::vector<fs::path>& paths, const fs::path& skip = {}) {
  std::vector<std::string> contents;
  for (const fs::path& path : paths)
    if (path.filename() != skip.filename()) contents.push_back(readFile(path));
  return contents;
}

bool namesConstant(const std::string& source, const std::string& name) {
  const std::string use = "messages::" + name;
  for (size_t at = source.find(use); at != std::string::npos; at = source.find(use, at + 1)) {
    const size_t end = at + use.size();
    if (end == source.size() || !(std::isalnum(static_cast<unsigned char>(source[end])) || source[end] == '_')) return true;
  }
  return false;
}

bool anyNames(const std::vector<std::string>& sources, const std::string& name) {
  for (const std::string& source : sources)
    if (namesConstant(source, name)) return true;
  return false;
}

bool anyQuotes(const std::vector<std::string>& sources, const std::string& literal) {
  if (literal.empty()) return false;
  for (const std::string& source : sources)
    if (source.find('"' + literal) != std::string::npos) return true;
  return false;
}

bool allSources(const fs::path&) { return true; }
bool notMessageHeader(const fs::path& path) { return !isMessageHeader(path); }

TEST(MessageTextsTest, EveryTextIsProvokedByATestOrReserved) {
  std::vector<std::string> headers;
  const std::vector<TextConstant> constants = textConstants(headers);
  // A wrong source folder would find nothing and pass; the loader's texts are known to be there.
  ASSERT_NE(std::find(headers.begin(), headers.end(), "definitions/PcfMessages.h"), headers.end());
  ASSERT_GT(constants.size(), 50u);

  const std::vector<std::string> tests = contentsOf(sourcesUnder(sourceDir() / "tests", allSources), fs::path(__FILE__));
  std::vector<fs::path> enginePaths;
  for (const char* folder : kEngineFolders)
    for (const fs::path& path : sourcesUnder(sourceDir() / folder, notMessageHeader)) enginePaths.push_back(path);
  const std::vector<std::string> engine = contentsOf(enginePaths);

  std::set<std::string> defined;
  for (const TextConstant& constant : constants) {
    defined.insert(constant.name);
    if (kReserved.count(constant.name)) {
      EXPECT_FALSE(anyNames(engine, constant.name))
          << constant.name << " (" << constant.header << ") is used by the engine now: take it off the reserved list and "
          << "provoke it in a test";
      continue;
    }
    EXPECT_TRUE(anyNames(tests, constant.name) || anyQuotes(tests, constant.literal))
        << constant.name << " (" << constant.header << ", \"" << constant.literal << "\") is provoked by no test";
  }
  for (const std::string& name : kReserved)
    EXPECT_TRUE(defined.count(name)) << name << " is reserved but no message header defines it";
}

}  // namespace
}  // namespace vantrelia
