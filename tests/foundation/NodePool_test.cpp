// The node pool: slots of every size class it serves, from a field node to a separator list,
// stay apart while live, come back to the next request of their class, and are counted.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "foundation/NodePool.h"

namespace vantrelia::testing {
namespace {

struct Live {
  void* slot;
  size_t size;
  unsigned char mark;
};

bool holdsMark(const Live& live) {
  const auto* bytes = static_cast<const unsigned char*>(live.slot);
  for (size_t i = 0; i < live.size; ++i) {
    if (bytes[i] != live.mark) return false;
  }
  return true;
}

TEST(NodePoolTest, LiveSlotsOfEverySizeStayApart) {
  // Small nodes, a child vector, a list of several kilobytes, the largest slot and one beyond it.
  const std::vector<size_t> sizes = {8, 16, 24, 120, 256, 264, 1000, 4544, NodePool::kLargestSlot,
                                     NodePool::kLargestSlot + 1};
  std::vector<Live> live;
  unsigned char mark = 1;
  for (int round = 0; round < 3; ++round) {
    for (size_t size : sizes) {
      void* slot = NodePool::allocate(size);
      ASSERT_NE(slot, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(slot) % alignof(std::max_align_t), 0u) << size;
      std::memset(slot, mark, size);
      live.push_back({slot, size, mark++});
    }
  }
  for (const Live& each : live) EXPECT_TRUE(holdsMark(each)) << each.size;
  for (const Live& each : live) NodePool::release(each.slot, each.size);
}

TEST(NodePoolTest, AFreedSlotServesTheNextRequestOfItsClassAndIsCounted) {
  for (size_t size : {size_t{40}, size_t{4544}, NodePool::kLargestSlot}) {
    const size_t before = NodePool::bytesInUse();
    void* first = NodePool::allocate(size);
#ifndef VANTRELIA_PLAIN_NODE_ALLOCATION
    EXPECT_GE(NodePool::bytesInUse() - before, size) << size;
#endif
    NodePool::release(first, size);
    EXPECT_EQ(NodePool::bytesInUse(), before) << size;
    void* again = NodePool::allocate(size - 1);
#ifndef VANTRELIA_PLAIN_NODE_ALLOCATION
    EXPECT_EQ(again, first) << size;
#endif
    NodePool::release(again, size - 1);
  }
}

TEST(NodePoolTest, VectorsGrowThroughTheClassesAndKeepTheirContent) {
  NodeVector<int> numbers;
  for (int i = 0; i < 5000; ++i) numbers.push_back(std::make_unique<int>(i));
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(*numbers[static_cast<size_t>(i)], i);
  numbers.resize(3);
  numbers.shrink_to_fit();
  EXPECT_EQ(*numbers.back(), 2);
}

}  // namespace
}  // namespace vantrelia::testing
