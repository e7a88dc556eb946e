#include "platform/event.h"

#include <windows.h>

#include <algorithm>
#include <system_error>

namespace fringix::platform {

namespace {

HANDLE handleOf(ManualResetEvent::Native native) noexcept { return reinterpret_cast<HANDLE>(native); }

}  // namespace

ManualResetEvent::ManualResetEvent() : native_(reinterpret_cast<Native>(CreateEventW(nullptr, TRUE, FALSE, nullptr))) {
  if (native_ == 0) throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateEventW");
}

ManualResetEvent::~ManualResetEvent() { CloseHandle(handleOf(native_)); }

void ManualResetEvent::set() noexcept { SetEvent(handleOf(native_)); }

void ManualResetEvent::reset() noexcept { ResetEvent(handleOf(native_)); }

bool ManualResetEvent::wait(std::chrono::milliseconds limit) const noexcept {
  const DWORD milliseconds = limit < limit.zero() ? INFINITE : static_cast<DWORD>(std::min<std::int64_t>(limit.count(), INFINITE - 1));
  return WaitForSingleObject(handleOf(native_), milliseconds) == WAIT_OBJECT_0;
}

}  // namespace fringix::platform
