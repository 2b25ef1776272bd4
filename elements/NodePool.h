#pragma once
// Where element nodes live: fixed-size slots carved from large blocks, one free list for each
// size, kept per thread. A parse makes one node for every field it meets, and general-purpose
// allocation (with its per-block headers, searches and consolidation) costs more than the parse
// itself; here a node costs a pointer swap, and freed slots serve the next message.
//
// Blocks are never given back: a slot freed on another thread than the one that made it joins
// that thread's list, which is safe because no block ever goes away. Memory stays at the peak
// that the largest trees needed.

#include <cstddef>

namespace vantrelia {

class NodePool {
 public:
  // Sizes above this go to the general allocator.
  static constexpr size_t kLargestSlot = 256;

  static void* allocate(size_t size);
  static void release(void* slot, size_t size);
  // What the slots of this thread's live nodes take, for measuring trees; nodes freed on another
  // thread than the one that made them make the figure of both threads wrong.
  static size_t bytesInUse();
};

}  // namespace vantrelia
