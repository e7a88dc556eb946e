#include "platform/reentrant_lock.h"

#include <mutex>

namespace fringix::platform {

struct ReentrantLock::Native {
  std::recursive_mutex mutex;
};

ReentrantLock::ReentrantLock() : native_(std::make_unique<Native>()) {}
ReentrantLock::~ReentrantLock() = default;
void ReentrantLock::lock() noexcept { native_->mutex.lock(); }
bool ReentrantLock::try_lock() noexcept { return native_->mutex.try_lock(); }
void ReentrantLock::unlock() noexcept { native_->mutex.unlock(); }

}  // namespace fringix::platform
