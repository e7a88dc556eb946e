// Which pixels of a scan show an artefact.
#pragma once

#include <cstddef>
#include <vector>

#include "clouds/point_grid.h"
#include "scanning/place.h"

namespace fringix::tool {

using Region = std::vector<std::size_t>;  // pixels with points, connected, in their order

// So many balls of a diameter among whatever else is in view, those with the most points. Throws Failure when there are not so many.
std::vector<Region> findBalls(const PointGrid& grid, double diameter, std::size_t count);

// The largest plane in view. Throws Failure when there is none.
Region findPlate(const PointGrid& grid);

std::vector<Place> placesOf(const PointGrid& grid, const Region& region);

}  // namespace fringix::tool
