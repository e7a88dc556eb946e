// The whole of it: gathers the facts.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

struct Task {
  std::string address;                 // empty: whichever heads answer
  std::optional<std::int32_t> serial;  // in place of the address
  std::chrono::milliseconds limit;     // for each step with a head
  std::chrono::milliseconds listen{};  // for triggers; 0: as long as the rest takes
};

Facts gather(const Task& task);

}  // namespace fringix::tool::diagnosis
