// The direction in which a surface faces, from a point's neighbours.
#pragma once

#include <cstddef>

#include "geometry.h"

namespace fringix::scan {

// Writes a unit vector towards `pinhole` for each point of an organised cloud; not a number where there is none or where it has no two
// neighbours across one another. `spacing` is that of neighbouring rays at distance 1.
void normals(const float* points, std::size_t width, std::size_t height, const Vector& pinhole, double spacing, float* normals,
             std::size_t threads);

}  // namespace fringix::scan
