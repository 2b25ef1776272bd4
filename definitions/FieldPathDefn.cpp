#include "definitions/FieldPathDefn.h"

#include <algorithm>
#include <limits>

namespace vantrelia {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

FieldPathDefn FieldPathDefn::parse(std::string_view path) {
  FieldPathDefn result;
  const size_t slash = path.find('/');
  const std::string_view rest = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
  // A "/" that isn't the last character exists exactly when the first one isn't the last.
  const bool hasInnerSlash = slash != std::string_view::npos && slash + 1 < path.size();
  result.numeric = hasInnerSlash && std::all_of(rest.begin(), rest.end(), [](char c) { return isDigit(c) || c == '/'; });
  if (!result.numeric) {
    result.name = std::string(path);
    return result;
  }

  result.name = std::string(path.substr(0, slash));
  constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
  for (size_t at = 0; at < rest.size();) {
    if (rest[at] == '/') {
      ++at;
      continue;
    }
    int64_t index = 0;
    for (; at < rest.size() && isDigit(rest[at]); ++at) index = std::min(kLargest, index * 10 + (rest[at] - '0'));
    result.indexes.push_back(static_cast<int32_t>(index));
  }
  return result;
}

FieldPathDefn FieldPathDefn::parseDotted(std::string_view path) {
  std::string slashed(path);
  std::replace(slashed.begin(), slashed.end(), '.', '/');
  return parse(slashed);
}

std::string FieldPathDefn::text() const {
  std::string result = name.str();
  if (numeric)
    for (int32_t index : indexes) result += "." + std::to_string(index);
  return result;
}

}  // namespace vantrelia
