// Which values a setting takes.
#pragma once

#include <cstdint>

namespace fringix::head {

struct Range {
  std::int32_t low = 0;
  std::int32_t high = 0;  // included

  constexpr bool contains(std::int32_t value) const { return low <= value && value <= high; }
};

}  // namespace fringix::head
