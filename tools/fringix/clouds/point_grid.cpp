#include "clouds/point_grid.h"

#include <stdexcept>

namespace fringix::tool {

void requireWhole(const PointGrid& grid) {
  const std::size_t pixels = grid.pixels();
  const bool whole = grid.points.size() == 3 * pixels && grid.normals.size() == 3 * pixels && grid.sigma.size() == pixels &&
                     grid.intensity.size() == pixels;
  if (!whole) throw std::invalid_argument("the cloud has not one entry for each pixel");
}

}  // namespace fringix::tool
