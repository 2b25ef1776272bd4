#include "support/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace vantrelia::testing {
namespace {

// Allocations to let through before the one that fails; negative when none is to fail.
thread_local int countdown = -1;
thread_local bool failed = false;

bool failThisOne() {
  if (countdown < 0) return false;
  if (countdown-- > 0) return false;
  failed = true;
  return true;
}

void* allocate(std::size_t size) {
  if (failThisOne()) throw std::bad_alloc();
  if (void* block = std::malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) {
  if (failThisOne()) throw std::bad_alloc();
  const auto align = static_cast<std::size_t>(alignment);
  // aligned_alloc wants a size that is a multiple of the alignment.
  if (void* block = std::aligned_alloc(align, ((size ? size : 1) + align - 1) / align * align)) return block;
  throw std::bad_alloc();
}

}  // namespace

FailingAllocation::FailingAllocation(int skipped) {
  failed = false;
  countdown = skipped;
}

FailingAllocation::~FailingAllocation() { countdown = -1; }

bool FailingAllocation::fired() const { return failed; }

}  // namespace vantrelia::testing

// Every form of the global operator new and delete, so that none of them pairs a block of these
// with the library's own allocator.
void* operator new(std::size_t size) { return vantrelia::testing::allocate(size); }
void* operator new[](std::size_t size) { return vantrelia::testing::allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return vantrelia::testing::allocateAligned(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return vantrelia::testing::allocateAligned(size, alignment); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return vantrelia::testing::allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  try {
    return vantrelia::testing::allocateAligned(size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept {
  return operator new(size, alignment, tag);
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { std::free(block); }
