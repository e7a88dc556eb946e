// Numbers shown as colours, with a scale that says what they mean.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "pictures/colour_map.h"
#include "png/raster.h"

namespace fringix::tool {

struct ValuePicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const float> values;  // rows from top to bottom; no number: left dark
  double low = 0;                 // what the ends of the scale stand for; values beyond are shown as these
  double high = 1;
  std::string unit;
  Colour (*colour)(double) = evenColour;
};

// In RGB, the scale to the right. Throws std::invalid_argument when there is not one value a pixel.
png::Raster drawValues(const ValuePicture& picture);

// The step of a scale between 1, 2 or 5 times a power of ten, that makes at most `most` steps of the range.
double roundStep(double range, double most);

}  // namespace fringix::tool
