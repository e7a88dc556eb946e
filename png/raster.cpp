#include "png/raster.h"

#include <algorithm>
#include <utility>

namespace fringix::png {
namespace {

// The pixels of a row (or rows of a picture) that the `index`th of `count` parts stands for.
struct Share {
  Share(std::uint32_t index, std::uint32_t count, std::uint32_t extent)
      : begin(static_cast<std::uint32_t>(std::uint64_t{index} * extent / count)),
        end(static_cast<std::uint32_t>((std::uint64_t{index} + 1) * extent / count)) {}

  std::uint32_t begin;
  std::uint32_t end;
};

std::uint8_t mean(const Raster& raster, Share columns, Share rows, std::uint32_t sample) {
  std::uint64_t sum = 0;
  for (std::uint32_t y = rows.begin; y < rows.end; ++y) {
    for (std::uint32_t x = columns.begin; x < columns.end; ++x) sum += raster.pixel(x, y)[sample];
  }
  // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): nothing is enlarged, so that no share is empty
  return static_cast<std::uint8_t>(sum / (std::uint64_t{columns.end - columns.begin} * (rows.end - rows.begin)));
}

}  // namespace

Raster filledRaster(std::uint32_t width, std::uint32_t height, std::uint32_t samplesPerPixel, std::uint8_t shade) {
  return {width, height, samplesPerPixel, std::vector<std::uint8_t>(std::size_t{width} * height * samplesPerPixel, shade)};
}

Raster toRgb(Raster raster) {
  if (raster.samplesPerPixel == 3) return raster;
  std::vector<std::uint8_t> samples;
  samples.reserve(raster.samples.size() * 3);
  for (const std::uint8_t gray : raster.samples) samples.insert(samples.end(), 3, gray);
  return {raster.width, raster.height, 3, std::move(samples)};
}

std::optional<Raster> toGray(Raster raster) {
  if (raster.samplesPerPixel == 1) return raster;
  std::vector<std::uint8_t> grays;
  grays.reserve(raster.samples.size() / 3);
  for (std::size_t i = 0; i < raster.samples.size(); i += 3) {
    const std::uint8_t* pixel = &raster.samples[i];
    if (pixel[0] != pixel[1] || pixel[0] != pixel[2]) return std::nullopt;
    grays.push_back(pixel[0]);
  }
  return Raster{raster.width, raster.height, 1, std::move(grays)};
}

Raster reduced(const Raster& raster, std::uint32_t width, std::uint32_t height) {
  Raster result = filledRaster(width, height, raster.samplesPerPixel, 0);
  for (std::uint32_t y = 0; y < height; ++y) {
    const Share rows(y, height, raster.height);
    for (std::uint32_t x = 0; x < width; ++x) {
      const Share columns(x, width, raster.width);
      for (std::uint32_t i = 0; i < raster.samplesPerPixel; ++i) result.pixel(x, y)[i] = mean(raster, columns, rows, i);
    }
  }
  return result;
}

void paste(Raster& into, const Raster& raster, std::uint32_t x, std::uint32_t y) {
  const std::size_t rowBytes = std::size_t{raster.width} * raster.samplesPerPixel;
  for (std::uint32_t row = 0; row < raster.height; ++row) std::copy_n(raster.pixel(0, row), rowBytes, into.pixel(x, y + row));
}

}  // namespace fringix::png
