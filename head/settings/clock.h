// The time that a head goes by. A test gives a head a clock of its own, so that what takes minutes is exact and takes no time.
#pragma once

#include <chrono>
#include <functional>

namespace fringix::head {

using TimePoint = std::chrono::steady_clock::time_point;
using Clock = std::function<TimePoint()>;  // called from several threads

}  // namespace fringix::head
