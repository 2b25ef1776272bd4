#pragma once
#include <array>
#include <cstdint>

namespace vantrelia {

// A 16-byte identifier as the definition file stores it: a 32-bit value, two 16-bit values, then
// eight bytes.
struct Guid {
  uint32_t data1 = 0;
  uint16_t data2 = 0;
  uint16_t data3 = 0;
  std::array<uint8_t, 8> data4{};

  bool operator==(const Guid&) const = default;
};

}  // namespace vantrelia
