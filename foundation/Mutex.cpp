#include "foundation/Mutex.h"

#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <new>

#include "foundation/FoundationMessages.h"

namespace vantrelia {

Mutex::Mutex() {
  try {
    impl = std::make_unique<boost::recursive_mutex>();
  } catch (const std::bad_alloc&) {
    throw boost::thread_resource_error(ENOMEM, messages::kThreadResourceError);
  } catch (const boost::thread_resource_error&) {
    throw boost::thread_resource_error(EAGAIN, messages::kThreadResourceError);
  }
}

Mutex::~Mutex() = default;

void Mutex::lock() { impl->lock(); }
void Mutex::unlock() { impl->unlock(); }

ScopedLock::ScopedLock(Mutex& m) : mutex(m) { lock(); }

ScopedLock::~ScopedLock() {
  if (locked) mutex.unlock();
}

void ScopedLock::lock() {
  if (locked) throw boost::lock_error(EDEADLK, messages::kThreadLockError);
  mutex.lock();
  locked = true;
}

void ScopedLock::unlock() {
  if (!locked) throw boost::lock_error(EPERM, messages::kThreadLockError);
  mutex.unlock();
  locked = false;
}

}  // namespace vantrelia
