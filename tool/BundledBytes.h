#pragma once
// The bytes of a definition file built into the program, under the name of its source.

#include <span>
#include <string_view>

namespace vantrelia::tool {

struct BundledBytes {
  std::string_view name;
  const unsigned char* begin;
  const unsigned char* end;

  // Every definition the build compiled, defined in a source the build generates.
  static std::span<const BundledBytes> all();
};

}  // namespace vantrelia::tool
