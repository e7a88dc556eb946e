// Random sequences, and of those for which something does not hold the shortest.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "model/step.h"

namespace fringix::test {

// The same seed gives the same sequences. Nothing when it holds for all of `count` sequences.
std::optional<Steps> shortestFailing(std::uint64_t seed, int count, const std::function<bool(const Steps&)>& holds);

}  // namespace fringix::test
