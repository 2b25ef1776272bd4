#pragma once

namespace vantrelia {

// The shared guard of operations that take an element or item index: throws BadParameter when
// index is below 0 or not below count.
void checkIndex(int index, int count);

}  // namespace vantrelia
