#include "support/ReadFile.h"

#include <fstream>
#include <sstream>

namespace vantrelia::testing {

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

}  // namespace vantrelia::testing
