// A damaged definition file never takes the engine down: whatever bytes are changed, the load
// either succeeds or fails with InvalidFile and a text that names what is wrong. Under the
// sanitizer build this also catches reads out of bounds and undefined behaviour in the loaders.

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>

#include "compiler/DefinitionCompiler.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {
namespace {

std::vector<uint8_t> bundledDefault(int version) {
  std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml");
  std::stringstream source;
  source << file.rdbuf();
  compiler::CompileOptions options;
  options.version = version;
  return compiler::DefinitionCompiler::compile(source.str(), options);
}

TEST(MutatedDefinitionTest, ChangedBytesLoadOrFailAsInvalidFile) {
  const std::vector<uint8_t> original = bundledDefault(883);
  std::mt19937 random(883);
  for (int round = 0; round < 600; ++round) {
    std::vector<uint8_t> bytes = original;
    const int changes = 1 + static_cast<int>(random() % 4);
    for (int i = 0; i < changes; ++i) {
      const size_t at = random() % bytes.size();
      switch (random() % 3) {
        case 0: bytes[at] ^= static_cast<uint8_t>(1u << (random() % 8)); break;
        case 1: bytes[at] = static_cast<uint8_t>(random()); break;
        default: bytes[at] = (random() % 2) ? 0xFF : 0x7F; break;  // extreme counts and lengths
      }
    }
    std::istringstream input(std::string(bytes.begin(), bytes.end()));
    DefinitionFile file(input);
    MessageWarehouseDefn warehouse;
    try {
      warehouse.read(file);
    } catch (const InvalidFile& e) {
      // A foreign exception wrapped by the loader means some check is missing.
      EXPECT_NE(e.message, messages::kUnexpectedLoadError) << "round " << round;
    } catch (const std::exception& e) {
      ADD_FAILURE() << "round " << round << ": " << e.what();
    }
  }
}

}  // namespace
}  // namespace vantrelia
