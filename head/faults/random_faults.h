// Faults that are drawn.
#pragma once

#include <cstdint>
#include <optional>

#include "head/faults/fault.h"

namespace fringix::head {

// The fault that random ones bring about at occasion number `n`, if any: a matter of their seed, n and the occasion alone, on every system.
std::optional<Fault> drawFault(const Fault& random, std::uint64_t n, Occasion occasion);

}  // namespace fringix::head
