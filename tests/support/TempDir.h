#pragma once
// A folder of its own for one test, removed with everything in it when the test ends.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vantrelia::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string path(const std::string& name) const { return (root / name).string(); }
  std::string write(const std::string& name, const std::vector<uint8_t>& bytes) const;
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path root;
};

}  // namespace vantrelia::testing
