#include "foundation/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/exceptions.hpp>
#include <chrono>
#include <memory>
#include <thread>

#include "foundation/FoundationMessages.h"
#include "support/FailingAllocation.h"

namespace {

using namespace std::chrono_literals;
using vantrelia::Mutex;
using vantrelia::ScopedLock;

// A second thread that takes the lock once, so a test can see whether the lock is free.
class Contender {
 public:
  explicit Contender(Mutex& mutex)
      : thread([&mutex, done = done] {
          ScopedLock guard(mutex);
          *done = true;
        }) {}
  ~Contender() {
    if (thread.joinable()) thread.join();
  }

  // Whether it got the lock within the wait. Meant for checking that it is still shut out.
  bool gotLockWithin(std::chrono::milliseconds wait) const {
    std::this_thread::sleep_for(wait);
    return *done;
  }
  // Waits generously for the lock. If it never comes the thread is left behind, so that the test
  // fails rather than hangs; the mutex must then outlive the test.
  bool finishes() {
    for (int i = 0; i < 500 && !*done; ++i) std::this_thread::sleep_for(10ms);
    if (*done) thread.join();
    else thread.detach();
    return *done;
  }

 private:
  std::shared_ptr<std::atomic<bool>> done = std::make_shared<std::atomic<bool>>(false);
  std::thread thread;
};

TEST(Mutex, ShutsOutOtherThreadsUntilReleased) {
  auto mutex = std::make_unique<Mutex>();
  std::unique_ptr<Contender> other;
  {
    ScopedLock guard(*mutex);
    other = std::make_unique<Contender>(*mutex);
    EXPECT_FALSE(other->gotLockWithin(50ms));
  }
  if (!other->finishes()) (void)mutex.release();
}

TEST(Mutex, IsReentrantOnOneThread) {
  auto mutex = std::make_unique<Mutex>();
  std::unique_ptr<Contender> other;
  {
    ScopedLock outer(*mutex);
    {
      ScopedLock inner(*mutex);  // must not deadlock
      other = std::make_unique<Contender>(*mutex);
    }
    // Leaving the inner guard gives back one level only.
    EXPECT_FALSE(other->gotLockWithin(50ms));
  }
  if (!other->finishes()) (void)mutex.release();
}

TEST(ScopedLock, RefusesToLockTwiceOrUnlockWhenNotHeld) {
  auto mutex = std::make_unique<Mutex>();
  {
    ScopedLock guard(*mutex);
    EXPECT_TRUE(guard.ownsLock());
    try {
      guard.lock();
      ADD_FAILURE() << "second lock accepted";
    } catch (const boost::lock_error& e) {
      EXPECT_STREQ(e.what(), "thread lock error");
    }
    EXPECT_TRUE(guard.ownsLock());

    guard.unlock();
    EXPECT_FALSE(guard.ownsLock());
    try {
      guard.unlock();
      ADD_FAILURE() << "unlock without the lock accepted";
    } catch (const boost::lock_error& e) {
      EXPECT_STREQ(e.what(), vantrelia::messages::kThreadLockError);
    }
    // The guard can take the lock again after giving it up.
    guard.lock();
    EXPECT_TRUE(guard.ownsLock());
    guard.unlock();
  }
  // The refused calls and the explicit unlock must leave the lock free: nothing was unlocked twice.
  Contender other(*mutex);
  if (!other.finishes()) (void)mutex.release();
}

// A lock that can't get memory for itself is a thread resource error with the fixed text.
TEST(Mutex, NoMemoryForTheLockIsAThreadResourceError) {
  vantrelia::testing::FailingAllocation failing;
  try {
    Mutex mutex;
    ADD_FAILURE() << "a lock made without memory";
  } catch (const boost::thread_resource_error& e) {
    EXPECT_STREQ(e.what(), vantrelia::messages::kThreadResourceError);
  }
  EXPECT_TRUE(failing.fired());
}

}  // namespace
