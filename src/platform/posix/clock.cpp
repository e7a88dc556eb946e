#include "platform/clock.h"

#include <ctime>
#include <thread>

namespace fringix::platform {

std::int64_t secondsSinceEpoch() noexcept { return static_cast<std::int64_t>(std::time(nullptr)); }

void sleepFor(std::chrono::milliseconds pause) noexcept { std::this_thread::sleep_for(pause); }

}  // namespace fringix::platform
