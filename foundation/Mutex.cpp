#include "foundation/Mutex.h"

#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <new>

#include "foundation/FoundationMessages.h"

namespace vantrelia {

namespace {

// Boost's errors append the description of their error code to what(); a host is shown the
// engine's fixed text alone, so these keep the class and the code but answer with the text.
template <class BoostError>
class FixedTextError final : public BoostError {
 public:
  FixedTextError(int code, const char* fixedText) : BoostError(code, fixedText), text(fixedText) {}
  const char* what() const noexcept override { return text; }

 private:
  const char* text;
};

using ThreadLockError = FixedTextError<boost::lock_error>;
using ThreadResourceError = FixedTextError<boost::thread_resource_error>;

}  // namespace

Mutex::Mutex() {
  try {
    impl = std::make_unique<boost::recursive_mutex>();
  } catch (const std::bad_alloc&) {
    throw ThreadResourceError(ENOMEM, messages::kThreadResourceError);
  } catch (const boost::thread_resource_error&) {
    throw ThreadResourceError(EAGAIN, messages::kThreadResourceError);
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
  if (locked) throw ThreadLockError(EDEADLK, messages::kThreadLockError);
  mutex.lock();
  locked = true;
}

void ScopedLock::unlock() {
  if (!locked) throw ThreadLockError(EPERM, messages::kThreadLockError);
  mutex.unlock();
  locked = false;
}

}  // namespace vantrelia
