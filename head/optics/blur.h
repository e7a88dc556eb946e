// How sharply the projector draws. A pixel of it is a square of even light, which the lens blurs by a normal distribution; the farther
// from the distance that is in focus, the wider.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/light.h"

namespace fringix::head {

// Blurs come in steps, so that light is blurred once for each step and not for each pixel that is seen.
inline constexpr std::uint32_t blurLevels = 24;

double blurOf(std::uint32_t level);       // the standard deviation in projector pixels: 0.6 at level 0, 12 % more from one to the next
std::uint32_t blurLevelFor(double blur);  // the nearest one

// A place between the columns (or rows) and the blur there, as one number: blurred light is tabled at 16 places a pixel, from the
// first pixel's edge to the last one's, for one level after the other; between two places it is interpolated. `extent` is the number
// of columns (or rows).
class BlurredPlace {
 public:
  static constexpr std::uint32_t placesPerPixel = 16;
  static constexpr int fractionBits = 8;

  static std::uint32_t tableSize(std::int32_t extent) { return static_cast<std::uint32_t>(extent) * placesPerPixel + 2; }
  static std::uint32_t encode(double place, std::uint32_t level, std::int32_t extent);

  BlurredPlace(std::uint32_t code, std::int32_t extent)
      : level(code / (tableSize(extent) << fractionBits)), index(code % (tableSize(extent) << fractionBits)) {}

  double place() const { return static_cast<double>(index) / (placesPerPixel << fractionBits) - 0.5; }

  std::uint32_t level;
  std::uint32_t index;  // in the level's table, with `fractionBits` behind the point
};

// Light that is the same all along each column (or row), in one table for each level that is marked in `levels`. What lies beyond the
// border counts as the outermost pixel.
std::vector<Brightness> blurredProfile(const std::vector<Brightness>& profile, const std::vector<bool>& levels);

// The light of an image where it has two such places.
Brightness blurredLight(const Light& light, const BlurredPlace& column, const BlurredPlace& row);

}  // namespace fringix::head
