#pragma once
// A whole file's bytes, for tests that read what a tool wrote or what the source tree holds.

#include <filesystem>
#include <string>

namespace vantrelia::testing {

// The bytes of the file as they are; "" when it can't be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace vantrelia::testing
