#pragma once
// Names and paths compare without regard to ASCII letter case; other bytes compare as they are.

#include <string_view>

namespace vantrelia {

inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  for (size_t i = 0; i < a.size(); ++i)
    if (lower(a[i]) != lower(b[i])) return false;
  return true;
}

}  // namespace vantrelia
