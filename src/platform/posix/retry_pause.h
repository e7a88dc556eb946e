// Milliseconds between two tries to get what another process still has, or a stranger will not give.
#pragma once

#include <algorithm>

namespace fringix::platform {

inline constexpr int shortestRetryPause = 1;
inline constexpr int longestRetryPause = 64;

constexpr int longerPause(int pause) noexcept { return std::clamp(2 * pause, shortestRetryPause, longestRetryPause); }

}  // namespace fringix::platform
