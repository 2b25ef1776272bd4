#pragma once
// Where element nodes and the other small objects of a parse live: fixed-size slots carved from
// large blocks, one free list for each size, kept per thread. A parse makes one node for every
// field it meets and several objects for every segment it reads, and general-purpose allocation
// (with its per-block headers, searches and consolidation) costs more than the parse itself;
// here an object costs a pointer swap, and freed slots serve the next message.
//
// Blocks are never given back: a slot freed on another thread than the one that made it joins
// that thread's list, which is safe because no block ever goes away. Memory stays at the peak
// that the largest trees needed.

#include <cstddef>
#include <memory>
#include <vector>

namespace vantrelia {

class NodePool {
 public:
  // Sizes above this go to the general allocator. Besides nodes, the pool serves what every
  // message makes once and holds as long as its tree, a separator list of a few kilobytes above
  // all: the general allocator serves a request that large by first merging every small block
  // freed since the last one, and a parse frees small blocks by the thousand.
  static constexpr size_t kLargestSlot = 8192;

  static void* allocate(size_t size);
  static void release(void* slot, size_t size);
  // What the slots of this thread's live nodes take, for measuring trees; nodes freed on another
  // thread than the one that made them make the figure of both threads wrong.
  static size_t bytesInUse();
};

// A base for classes whose objects come from the pool. The deleting destructor of a class with a
// virtual one passes the size of the object's own class.
struct PoolAllocated {
  static void* operator new(size_t size) { return NodePool::allocate(size); }
  static void operator delete(void* object, size_t size) { NodePool::release(object, size); }
};

// For the containers inside nodes (the child slots above all): a composite's few children cost a
// slot swap like the node itself, and free as fast when the tree goes.
template <class T>
struct NodePoolAllocator {
  using value_type = T;

  NodePoolAllocator() = default;
  template <class U>
  NodePoolAllocator(const NodePoolAllocator<U>&) noexcept {}

  T* allocate(size_t count) { return static_cast<T*>(NodePool::allocate(count * sizeof(T))); }
  void deallocate(T* memory, size_t count) noexcept { NodePool::release(memory, count * sizeof(T)); }

  template <class U>
  bool operator==(const NodePoolAllocator<U>&) const noexcept {
    return true;
  }
};

// The child slots of a node.
template <class T>
using NodeVector = std::vector<std::unique_ptr<T>, NodePoolAllocator<std::unique_ptr<T>>>;

// Called by a node's destructor before its children go: their memory is fetched all at once
// instead of each when its destructor reaches it. A large tree is mostly freed long after it was
// made, when little of it is still in the cache.
template <class T>
void prefetchEach(const NodeVector<T>& nodes) {
  for (const auto& node : nodes) __builtin_prefetch(node.get(), 1, 3);
}

}  // namespace vantrelia
