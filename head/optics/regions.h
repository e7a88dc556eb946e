// Parts of pictures, and pictures made smaller.
#pragma once

#include <cstdint>

#include "head/optics/picture.h"

namespace fringix::head {

struct Region {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

bool liesWithin(const Region& region, Size size);

// Both take a region that is not empty and lies within the picture.
void crop(const Picture& picture, const Region& region, Picture& part);
void reduce(const Picture& picture, const Region& region, std::uint32_t factor, Picture& reduced);  // the mean of each full cell

}  // namespace fringix::head
