#include "head/chart.h"

#include <algorithm>
#include <cmath>

namespace fringix::head {

namespace {

constexpr std::uint8_t white = 255;
constexpr std::uint8_t light = 200;
constexpr std::uint8_t dark = 60;

struct ChartLayout {
  Size size;
  std::int32_t cell;   // side of a checkerboard square
  std::int32_t frame;  // width of the white frame
};

bool onFrame(const ChartLayout& chart, std::int32_t x, std::int32_t y) {
  return x < chart.frame || y < chart.frame || x >= chart.size.width - chart.frame || y >= chart.size.height - chart.frame;
}

bool onRing(const ChartLayout& chart, std::int32_t x, std::int32_t y) {
  const double distance = std::hypot(x - chart.size.width / 2, y - chart.size.height / 2);
  return std::abs(distance - chart.size.height / 3.0) < chart.frame / 2.0;
}

std::uint8_t shadeAt(const ChartLayout& chart, std::int32_t x, std::int32_t y) {
  if (onFrame(chart, x, y) || onRing(chart, x, y)) return white;
  if (y < chart.size.height / 4) return static_cast<std::uint8_t>(1 + std::int64_t{254} * x / chart.size.width);
  return (x / chart.cell + y / chart.cell) % 2 == 0 ? light : dark;
}

}  // namespace

Picture makeChart(Size size) {
  const std::int32_t shorter = std::min(size.width, size.height);
  const ChartLayout chart{size, std::max(1, shorter / 16), std::max(1, shorter / 100)};
  Picture picture;
  picture.resize(size);
  for (std::int32_t y = 0; y < size.height; ++y) {
    std::uint8_t* row = picture.row(y);
    for (std::int32_t x = 0; x < size.width; ++x) row[x] = shadeAt(chart, x, y);
  }
  return picture;
}

}  // namespace fringix::head
