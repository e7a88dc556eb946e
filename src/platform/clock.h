// Time of day and pauses.
#pragma once

#include <chrono>
#include <cstdint>

namespace fringix::platform {

std::int64_t secondsSinceEpoch() noexcept;                // whole seconds since 1970, UTC
void sleepFor(std::chrono::milliseconds pause) noexcept;  // blocks the calling thread, no shorter than `pause`

}  // namespace fringix::platform
