// Faults as people write them: "after 3 pictures: cut at byte 700".
#pragma once

#include <span>
#include <string>

#include "head/faults/fault.h"

namespace fringix::head {

// `commands` are the names of those that may be named. Throws arguments::UsageError, which says what is wrong, where, and what is
// allowed.
Fault parseFault(const std::string& text, std::span<const std::string> commands);

}  // namespace fringix::head
