#pragma once
// The engine's one lock: re-entrant on a thread, held by a scoped guard.

#include <boost/core/noncopyable.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <memory>

namespace vantrelia {

class Mutex : boost::noncopyable {
 public:
  // Throws boost::thread_resource_error "thread resource error" when the lock can't be allocated.
  Mutex();
  ~Mutex();

  void lock();
  void unlock();

 private:
  std::unique_ptr<boost::recursive_mutex> impl;
};

// Locks in its constructor, unlocks in its destructor if it still holds the lock. Locking while
// holding, or unlocking while not, throws boost::lock_error "thread lock error".
class ScopedLock : boost::noncopyable {
 public:
  explicit ScopedLock(Mutex& mutex);
  ~ScopedLock();

  void lock();
  void unlock();
  bool ownsLock() const { return locked; }

 private:
  Mutex& mutex;
  bool locked = false;
};

}  // namespace vantrelia
