#pragma once

namespace vantrelia {

// Throws BadParameter for an index below 0 or not below count.
[[noreturn, gnu::cold]] void refuseIndex(int index, int count);

// The shared guard of operations that take an element or item index: throws BadParameter when
// index is below 0 or not below count. Inline: item and child look-ups run it for every segment.
inline void checkIndex(int index, int count) {
  if (index < 0 || index >= count) [[unlikely]] refuseIndex(index, count);
}

}  // namespace vantrelia
