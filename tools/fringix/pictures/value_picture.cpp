#include "pictures/value_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "pictures/lettering.h"

namespace fringix::tool {
namespace {

constexpr std::uint32_t margin = 12;
constexpr std::uint32_t barWidth = 24;
constexpr std::uint32_t tickLength = 6;
constexpr std::uint32_t leastBarHeight = 120;
constexpr std::uint32_t heightPerLabel = 64;
constexpr std::uint8_t paper = 24;
constexpr std::uint8_t ink = 230;
constexpr std::size_t colourCount = 256;

using Colours = std::array<Colour, colourCount>;

Colours coloursOf(const ValuePicture& picture) {
  Colours colours;
  for (std::size_t i = 0; i < colourCount; ++i) colours[i] = picture.colour(static_cast<double>(i) / (colourCount - 1));
  return colours;
}

void put(png::Raster& raster, std::uint32_t x, std::uint32_t y, const Colour& colour) {
  std::copy(colour.begin(), colour.end(), raster.pixel(x, y));
}

struct Scale {
  double low;
  double range;
  std::uint32_t height;  // of the bar

  std::size_t colourOf(double value) const {
    const double share = std::clamp((value - low) / range, 0.0, 1.0);
    return static_cast<std::size_t>(std::lround(share * (colourCount - 1)));
  }
  std::uint32_t rowOf(double value) const {
    return margin + static_cast<std::uint32_t>(std::lround((1 - (value - low) / range) * (height - 1)));
  }
};

Scale scaleOf(const ValuePicture& picture) {
  return {picture.low, std::max(picture.high - picture.low, 1e-9), std::max(picture.height, leastBarHeight)};
}

void drawPixels(png::Raster& raster, const ValuePicture& picture, const Scale& scale, const Colours& colours) {
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::uint32_t x = 0; x < picture.width; ++x) {
      const float value = picture.values[std::size_t{y} * picture.width + x];
      if (std::isfinite(value)) put(raster, margin + x, margin + y, colours[scale.colourOf(value)]);
    }
  }
}

void drawBar(png::Raster& raster, std::uint32_t left, const Scale& scale, const Colours& colours) {
  for (std::uint32_t y = 0; y < scale.height; ++y) {
    const auto colour = static_cast<std::size_t>(std::lround((1 - y / (scale.height - 1.0)) * (colourCount - 1)));
    for (std::uint32_t x = 0; x < barWidth; ++x) put(raster, left + x, margin + y, colours[colour]);
  }
}

struct Label {
  double value;
  std::u32string text;
};

std::vector<Label> labelsOf(const ValuePicture& picture, const Scale& scale) {
  const double step = roundStep(scale.range, scale.height / double{heightPerLabel});
  const int digits = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
  std::vector<Label> labels;
  const auto first = static_cast<std::int64_t>(std::ceil(scale.low / step - 1e-9));
  for (std::int64_t i = first; static_cast<double>(i) * step <= scale.low + scale.range * (1 + 1e-9); ++i) {
    const double value = static_cast<double>(i) * step;
    labels.push_back({value, charactersOf(fmt::format("{:.{}f} {}", value, digits, picture.unit))});
  }
  return labels;
}

void drawLabel(png::Raster& raster, std::uint32_t left, const Label& label, const Scale& scale) {
  const std::uint32_t row = scale.rowOf(label.value);
  for (std::uint32_t x = 0; x < tickLength; ++x) put(raster, left + x, row, {ink, ink, ink});
  const std::uint32_t top = row > letterHeight / 2 ? row - letterHeight / 2 : 0;
  drawText(raster, left + 2 * tickLength, top, label.text, ink);
}

}  // namespace

double roundStep(double range, double most) {
  const double least = range / std::max(most, 1.0);
  const double power = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

png::Raster drawValues(const ValuePicture& picture) {
  if (picture.values.size() != std::size_t{picture.width} * picture.height) throw std::invalid_argument("not one value a pixel");
  const Scale scale = scaleOf(picture);
  const Colours colours = coloursOf(picture);
  const std::vector<Label> labels = labelsOf(picture, scale);
  std::size_t longest = 0;
  for (const Label& label : labels) longest = std::max(longest, label.text.size());
  const std::uint32_t barLeft = picture.width + 2 * margin;
  const std::uint32_t width = barLeft + barWidth + 2 * tickLength + static_cast<std::uint32_t>(longest) * letterPitch + margin;
  png::Raster raster = png::filledRaster(width, scale.height + 2 * margin, 3, paper);
  drawPixels(raster, picture, scale, colours);
  drawBar(raster, barLeft, scale, colours);
  for (const Label& label : labels) drawLabel(raster, barLeft + barWidth, label, scale);
  return raster;
}

}  // namespace fringix::tool
