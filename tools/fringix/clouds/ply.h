// Clouds as PLY files.
#pragma once

#include <span>
#include <string>

#include "clouds/bytes.h"
#include "clouds/point_grid.h"

namespace fringix::tool {

// The whole file, binary, the low byte first: pixels with a point only, because not every viewer leaves out what is no number. A point
// without a normal has the normal 0, 0, 0. Each comment is a line.
Bytes makePly(const PointGrid& grid, std::span<const std::string> comments);

}  // namespace fringix::tool
