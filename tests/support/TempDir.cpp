#include "support/TempDir.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <stdexcept>

namespace vantrelia::testing {

TempDir::TempDir() {
  static std::atomic<int> serial{0};
  root = std::filesystem::temp_directory_path() /
         ("vantrelia-test-" + std::to_string(::getpid()) + "-" + std::to_string(serial++));
  std::filesystem::create_directories(root);
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(root, ignored);
}

std::string TempDir::write(const std::string& name, const std::vector<uint8_t>& bytes) const {
  const std::string target = path(name);
  std::ofstream file(target, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + target);
  return target;
}

std::string TempDir::write(const std::string& name, const std::string& text) const {
  return write(name, std::vector<uint8_t>(text.begin(), text.end()));
}

}  // namespace vantrelia::testing
