// What faults do to a reply.
#pragma once

#include <chrono>
#include <span>

#include "head/faults/fault.h"
#include "head/wire/damage.h"

namespace fringix::head {

// Of several endings the last one counts. A stall without end lasts as long as `patience`.
Damage damageBy(std::span<const Fault> faults, std::chrono::milliseconds patience);

}  // namespace fringix::head
