#pragma once
// One allocation of this thread made to fail with std::bad_alloc, for the texts the engine gives
// when memory runs out. The test program replaces the global operator new and delete for this
// (FailingAllocation.cpp); every other allocation goes to malloc and free as usual.

namespace vantrelia::testing {

class FailingAllocation {
 public:
  // The allocation of this thread after `skipped` more fails, and only that one: the handler
  // that answers it may allocate again.
  explicit FailingAllocation(int skipped = 0);
  ~FailingAllocation();  // disarms one that hasn't fired
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  bool fired() const;
};

}  // namespace vantrelia::testing
