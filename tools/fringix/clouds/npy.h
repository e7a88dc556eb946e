// Arrays as NumPy stores them.
#pragma once

#include "clouds/bytes.h"
#include "clouds/point_grid.h"

namespace fringix::tool {

// The whole file, version 1.0: the points as height x width x 3 numbers of 32 bits, no numbers where there is no point.
Bytes makeRangeArray(const PointGrid& grid);

}  // namespace fringix::tool
