#include "head/optics/patterns.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "head/optics/gray_code.h"

namespace fringix::head {

namespace {

// A pattern whose level depends on the number of the column (or row) alone.
template <class Level>
Pattern makeFromLevels(Size size, Axis axis, Level level) {
  std::vector<Colour> profile(static_cast<std::size_t>(extent(size, axis)));
  for (std::size_t i = 0; i < profile.size(); ++i) profile[i] = grey(level(static_cast<std::uint32_t>(i)));
  return makeFromProfile(size, axis, profile);
}

}  // namespace

Pattern makeFromProfile(Size size, Axis axis, const std::vector<Colour>& profile) {
  Pattern pattern(size);
  for (std::int32_t y = 0; y < size.height; ++y) {
    Colour* row = pattern.row(y);
    if (axis == Axis::columns) std::copy(profile.begin(), profile.end(), row);
    if (axis == Axis::rows) std::fill(row, row + size.width, profile[static_cast<std::size_t>(y)]);
  }
  return pattern;
}

Pattern makeGrayCode(Size size, Axis axis, std::uint32_t bit, bool inverted) {
  return makeFromLevels(size, axis, [=](std::uint32_t number) {
    const bool set = (grayCode(number) >> bit & 1U) != 0;
    return static_cast<std::uint8_t>(set != inverted ? 255 : 0);
  });
}

Pattern makePhase(Size size, Axis axis, double period, std::uint32_t step, std::uint32_t steps) {
  return makeFromLevels(size, axis, [=](std::uint32_t number) {
    const double angle = 2 * std::numbers::pi * (number / period - static_cast<double>(step) / steps);
    return static_cast<std::uint8_t>(std::lround(127.5 * (1 + std::cos(angle))));
  });
}

Pattern makeUniform(Size size, std::uint8_t level) {
  Pattern pattern(size);
  std::fill(pattern.pixels.begin(), pattern.pixels.end(), grey(level));
  return pattern;
}

Pattern makeCheckerboard(Size size, std::uint8_t level, std::int32_t side) {
  Pattern pattern(size);
  for (std::int32_t y = 0; y < size.height; ++y) {
    Colour* row = pattern.row(y);
    for (std::int32_t x = 0; x < size.width; ++x) row[x] = grey((x / side + y / side) % 2 == 0 ? level : 0);
  }
  return pattern;
}

Pattern makeRamp(Size size, Axis axis, std::uint8_t level) {
  const auto last = static_cast<std::uint32_t>(std::max(1, extent(size, axis) - 1));
  return makeFromLevels(size, axis, [=](std::uint32_t number) { return static_cast<std::uint8_t>((number * level + last / 2) / last); });
}

}  // namespace fringix::head
