#include "platform/clock.h"

#include <windows.h>

#include <ctime>

namespace fringix::platform {

std::int64_t secondsSinceEpoch() noexcept { return static_cast<std::int64_t>(_time64(nullptr)); }

void sleepFor(std::chrono::milliseconds pause) noexcept { Sleep(static_cast<DWORD>(pause.count())); }

}  // namespace fringix::platform
