#pragma once
// A whole text read as one decimal number, the way number pictures and field writers take a
// value: leading white space and a sign allowed, and nothing may be left over. An empty text
// reads as 0. The reading ignores the host's locale: the decimal mark is always ".".

#include <cstdint>
#include <string_view>

namespace vantrelia {

class NumberText {
 public:
  // Digits only, no point or exponent. False for anything left over and for a number beyond
  // 64 bits.
  static bool readLong(std::u16string_view text, int64_t& number);
  // Digits with an optional point and exponent. Hexadecimal, infinity and not-a-number texts are
  // not numbers here, and neither is a number beyond the range of a double.
  static bool readDouble(std::u16string_view text, double& number);
};

}  // namespace vantrelia
