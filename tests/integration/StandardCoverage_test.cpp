// The coverage table of standards/README.md against the PCFs the build compiled: every message set
// of every standard PCF has its row, and every row's message count is the loaded one.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>

#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"
#include "support/ReadFile.h"

namespace vantrelia {
namespace {

using SetKey = std::pair<std::string, std::string>;  // PCF file name, message set name

// The rows of the README's coverage table: message count by PCF and set.
std::map<SetKey, size_t> documentedCounts() {
  std::istringstream readme(testing::readFile(std::string(VANTRELIA_SOURCE_DIR) + "/standards/README.md"));
  const std::regex row(R"(^\| `([^`]+\.pcf)` \| `([^`]+)` \| .* \| ([0-9]+) \|$)");
  std::map<SetKey, size_t> counts;
  std::string line;
  std::smatch parts;
  while (std::getline(readme, line))
    if (std::regex_match(line, parts, row)) counts[{parts[1], parts[2]}] = std::stoul(parts[3]);
  return counts;
}

// Message counts of every set of the PCFs compiled from standards/*/*.yaml.
std::map<SetKey, size_t> loadedCounts() {
  namespace fs = std::filesystem;
  std::map<SetKey, size_t> counts;
  for (const auto& folder : fs::directory_iterator(fs::path(VANTRELIA_SOURCE_DIR) / "standards")) {
    if (!folder.is_directory()) continue;
    for (const auto& source : fs::directory_iterator(folder.path())) {
      if (source.path().extension() != ".yaml") continue;
      const std::string pcf = source.path().stem().string() + ".pcf";
      MessageFactory factory;
      factory.LoadDefinition(std::string(VANTRELIA_BUNDLED_DIR) + "/" + pcf);
      for (const auto& set : factory.getWarehouse().getMessageSets())
        counts[{pcf, set->getName().str()}] = set->getMessages().size();
    }
  }
  return counts;
}

TEST(StandardCoverage, ReadmeTableListsEverySetWithItsMessageCount) {
  const auto documented = documentedCounts();
  const auto loaded = loadedCounts();
  ASSERT_GE(loaded.size(), 9u) << "the four standards compile to nine message sets";
  EXPECT_EQ(documented, loaded);
}

}  // namespace
}  // namespace vantrelia
