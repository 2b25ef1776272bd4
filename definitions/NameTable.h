#pragma once
// The names of a run of values from 0 up, as the definition language and the tools write them:
// data types, separators, alignments. One table answers both ways.

#include <array>
#include <cstddef>
#include <string_view>

namespace vantrelia {

template <size_t N>
class NameTable {
 public:
  constexpr explicit NameTable(const std::array<std::string_view, N>& valueNames) : names(valueNames) {}

  // The name of a value; "" outside 0 to N - 1.
  constexpr std::string_view nameOf(int value) const {
    return value >= 0 && static_cast<size_t>(value) < N ? names[static_cast<size_t>(value)] : std::string_view();
  }
  // The value of a name, or -1.
  constexpr int valueOf(std::string_view name) const {
    for (size_t value = 0; value < N; ++value)
      if (names[value] == name) return static_cast<int>(value);
    return -1;
  }

 private:
  std::array<std::string_view, N> names;
};

}  // namespace vantrelia
