// Patches: pixels with points that touch one another at their sides.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fringix::scan {

// Pixels of one row from `first` up to before `end`.
struct Run {
  std::size_t row;
  std::size_t first;
  std::size_t end;
};

// The runs of the patches that have fewer than `least` pixels, among those without a reason.
std::vector<Run> smallPatches(const std::uint8_t* reason, std::size_t width, std::size_t height, std::size_t least);

}  // namespace fringix::scan
