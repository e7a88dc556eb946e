// A picture in memory, gray or in colours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace fringix::png {

struct Raster {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t samplesPerPixel = 1;  // 1: gray, 3: red, green, blue
  std::vector<std::uint8_t> samples;  // rows from top to bottom without gaps

  std::size_t offset(std::uint32_t x, std::uint32_t y) const { return (std::size_t{y} * width + x) * samplesPerPixel; }
  const std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) const { return samples.data() + offset(x, y); }
  std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) { return samples.data() + offset(x, y); }
};

Raster filledRaster(std::uint32_t width, std::uint32_t height, std::uint32_t samplesPerPixel, std::uint8_t shade);

// The same picture with 3 samples per pixel.
Raster toRgb(Raster raster);

// The same picture with 1 sample per pixel; nothing when it has colours.
std::optional<Raster> toGray(Raster raster);

// The picture reduced to a size that is no larger than its own; each pixel is the mean of those that it stands for.
Raster reduced(const Raster& raster, std::uint32_t width, std::uint32_t height);

// Copies a picture with as many samples per pixel into a larger one, its top left corner at x, y; it has to fit.
void paste(Raster& into, const Raster& raster, std::uint32_t x, std::uint32_t y);

}  // namespace fringix::png
