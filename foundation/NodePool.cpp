#include "foundation/NodePool.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace vantrelia {

namespace {

constexpr size_t kGranule = 16;
constexpr size_t kClasses = NodePool::kLargestSlot / kGranule;
// A thread's first block is small, so that a thread that reads a message now and then holds
// little. The blocks after it are each one huge page: the trees of large texts touch their
// nodes' memory once, and at 4 KB a page that first touch costs a fault per page, about a third
// of a cold parse.
constexpr size_t kFirstBlockBytes = 64 * 1024;
constexpr size_t kBlockBytes = 2 * 1024 * 1024;

struct BlockRelease {
  void operator()(char* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, BlockRelease>;

Block newBlock(size_t bytes) {
  auto* memory = static_cast<char*>(std::aligned_alloc(bytes, bytes));
  if (!memory) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  // Only a hint: where the system has no huge pages the block is made of small ones.
  if (bytes == kBlockBytes) madvise(memory, bytes, MADV_HUGEPAGE);
#endif
  return Block(memory);
}

struct FreeSlot {
  FreeSlot* next;
};

struct ThreadPool {
  std::array<FreeSlot*, kClasses> free{};
  size_t inUse = 0;
  // The block being carved, and what is left of it.
  char* cursor = nullptr;
  size_t left = 0;
};

// Blocks of every thread, kept for the life of the process (see the header).
std::vector<Block>& blocks() {
  static auto* all = new std::vector<Block>();
  return *all;
}

thread_local ThreadPool pool;

size_t classOf(size_t size) { return (size + kGranule - 1) / kGranule - 1; }

}  // namespace

void* NodePool::allocate(size_t size) {
#ifdef VANTRELIA_PLAIN_NODE_ALLOCATION
  return ::operator new(size);
#endif
  if (size == 0 || size > kLargestSlot) return ::operator new(size);
  const size_t sizeClass = classOf(size);
  pool.inUse += (sizeClass + 1) * kGranule;
  if (FreeSlot* slot = pool.free[sizeClass]) {
    pool.free[sizeClass] = slot->next;
    // The next slot of this size is wanted soon, and after a large tree was freed it lies far from
    // the cache: fetching it now hides that wait behind the work until then.
    __builtin_prefetch(slot->next, 1, 3);
    return slot;
  }
  const size_t slotBytes = (sizeClass + 1) * kGranule;
  if (pool.left < slotBytes) {
    const size_t bytes = pool.cursor ? kBlockBytes : kFirstBlockBytes;
    Block block = newBlock(bytes);
    pool.cursor = block.get();
    pool.left = bytes;
    // One lock-free list per thread, one shared list of blocks: guard it.
    static std::atomic_flag busy = ATOMIC_FLAG_INIT;
    while (busy.test_and_set(std::memory_order_acquire)) {
    }
    blocks().push_back(std::move(block));
    busy.clear(std::memory_order_release);
  }
  void* slot = pool.cursor;
  pool.cursor += slotBytes;
  pool.left -= slotBytes;
  return slot;
}

void NodePool::release(void* slot, size_t size) {
  if (!slot) return;
#ifdef VANTRELIA_PLAIN_NODE_ALLOCATION
  ::operator delete(slot);
  return;
#endif
  if (size == 0 || size > kLargestSlot) {
    ::operator delete(slot);
    return;
  }
  auto* freed = static_cast<FreeSlot*>(slot);
  const size_t sizeClass = classOf(size);
  pool.inUse -= (sizeClass + 1) * kGranule;
  freed->next = pool.free[sizeClass];
  pool.free[sizeClass] = freed;
}

size_t NodePool::bytesInUse() { return pool.inUse; }

}  // namespace vantrelia
