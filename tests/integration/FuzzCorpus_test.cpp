// The definition loader's fuzz inputs replayed in the normal build: the committed seeds and every
// input the fuzzer once crashed on must load and show cleanly or be refused with a named text.
// Under the sanitizer build this also catches what the fuzzer's sanitizers caught.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fuzz/DefinitionInput.h"
#include "fuzz/MessageInput.h"
#include "support/ReadFile.h"

namespace vantrelia {
namespace {

namespace fs = std::filesystem;

// Every input of the folder; its README says what the folder is for.
std::vector<fs::path> inputsIn(const std::string& folder) {
  std::vector<fs::path> inputs;
  for (const auto& entry : fs::directory_iterator(fs::path(VANTRELIA_SOURCE_DIR) / folder))
    if (entry.is_regular_file() && entry.path().filename() != "README.md") inputs.push_back(entry.path());
  return inputs;
}

TEST(FuzzCorpusTest, SeedsAndSavedCrashesLoadOrAreRefusedCleanly) {
  const std::vector<fs::path> seeds = inputsIn("fuzz/corpus/definition");
  // The bundled default at several versions and the small definitions; none means a wrong folder.
  ASSERT_GE(seeds.size(), 10u);
  std::vector<fs::path> all = seeds;
  for (const fs::path& crash : inputsIn("fuzz/crashes/definition")) all.push_back(crash);
  for (const fs::path& input : all) {
    const std::string bytes = testing::readFile(input);
    EXPECT_EQ(fuzz::loadAndInspect(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), "") << input.filename();
  }
}

TEST(FuzzCorpusTest, MessageSeedsAndSavedCrashesReadAndWriteCleanly) {
  std::vector<fs::path> all = inputsIn("fuzz/corpus/messages");
  // The examples of every bundled set and texts with other delimiters; none means a wrong folder.
  ASSERT_GE(all.size(), 6u);
  for (const char* more : {"fuzz/corpus/messages-found", "fuzz/crashes/messages"})
    for (const fs::path& input : inputsIn(more)) all.push_back(input);
  for (const fs::path& input : all) {
    const std::string bytes = testing::readFile(input);
    EXPECT_EQ(fuzz::parseAndWrite(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), "") << input.filename();
  }
}

}  // namespace
}  // namespace vantrelia
