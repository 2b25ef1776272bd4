#include "definitions/DataTypeCodes.h"

#include <array>

namespace vantrelia {

namespace {

constexpr std::array<std::string_view, DataTypeCodes::kCount> kNames = {
    "short", "long",   "float", "double",   "string",        "binary",     "base64", "uuencoded",
    "hex",   "custom", "array", "variable", "strictInteger", "strictReal", "quoted"};

}  // namespace

std::string_view DataTypeCodes::nameOf(int32_t code) {
  return code >= 0 && code < kCount ? kNames[static_cast<size_t>(code)] : std::string_view();
}

int32_t DataTypeCodes::codeOf(std::string_view name) {
  for (size_t code = 0; code < kNames.size(); ++code)
    if (kNames[code] == name) return static_cast<int32_t>(code);
  return -1;
}

}  // namespace vantrelia
