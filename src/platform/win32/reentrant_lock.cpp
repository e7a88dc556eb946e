#include "platform/reentrant_lock.h"

#include <windows.h>

#include <system_error>

namespace fringix::platform {

struct ReentrantLock::Native {
  CRITICAL_SECTION section;
};

ReentrantLock::ReentrantLock() : native_(std::make_unique<Native>()) {
  constexpr DWORD spinCount = 1024;
  if (!InitializeCriticalSectionAndSpinCount(&native_->section, spinCount)) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "InitializeCriticalSectionAndSpinCount");
  }
}

ReentrantLock::~ReentrantLock() { DeleteCriticalSection(&native_->section); }
void ReentrantLock::lock() noexcept { EnterCriticalSection(&native_->section); }
bool ReentrantLock::try_lock() noexcept { return TryEnterCriticalSection(&native_->section) != 0; }
void ReentrantLock::unlock() noexcept { LeaveCriticalSection(&native_->section); }

}  // namespace fringix::platform
