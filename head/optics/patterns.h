// Makes the patterns that a head knows by itself. docs/simulated-head.md gives the formulas.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/pattern.h"

namespace fringix::head {

enum class Axis : std::uint32_t { columns = 0, rows = 1 };  // what a pattern numbers: it changes from column to column, or from row to row

inline std::int32_t extent(Size size, Axis axis) { return axis == Axis::columns ? size.width : size.height; }

// One colour for each column (or row), the same all along it; `profile` has one entry for each.
Pattern makeFromProfile(Size size, Axis axis, const std::vector<Colour>& profile);

// Bright where bit `bit` (0 is the finest) of the column's or row's number in Gray code is set.
Pattern makeGrayCode(Size size, Axis axis, std::uint32_t bit, bool inverted);

// Step `step` of `steps` of a cosine of `period` pixels.
Pattern makePhase(Size size, Axis axis, double period, std::uint32_t step, std::uint32_t steps);

Pattern makeUniform(Size size, std::uint8_t level);
Pattern makeCheckerboard(Size size, std::uint8_t level, std::int32_t side);  // the first square is bright
Pattern makeRamp(Size size, Axis axis, std::uint8_t level);                  // from black to `level`

}  // namespace fringix::head
