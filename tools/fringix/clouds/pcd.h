// Clouds as PCD files.
#pragma once

#include "clouds/bytes.h"
#include "clouds/point_grid.h"

namespace fringix::tool {

// The whole file, version 0.7, binary and organised: an entry for each pixel, with no numbers where there is no point.
Bytes makePcd(const PointGrid& grid);

}  // namespace fringix::tool
