#include "naive.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace fringix::bench {

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr std::size_t grayStart = 2;

double columnOf(const SLScanPlan& plan, const std::vector<const std::uint8_t*>& pictures, std::size_t pixel) {
  const std::size_t bits = pictures.size() - grayStart - static_cast<std::size_t>(plan.steps);
  const double middle = (pictures[0][pixel] + pictures[1][pixel]) / 2.0;
  unsigned code = 0;
  for (std::size_t bit = 0; bit < bits; ++bit) {
    const unsigned one = pictures[grayStart + bit][pixel] > middle ? 1U : 0U;
    code = 2 * code + ((code & 1U) ^ one);
  }
  double sine = 0;
  double cosine = 0;
  for (int step = 0; step < plan.steps; ++step) {
    const double level = pictures[grayStart + bits + static_cast<std::size_t>(step)][pixel];
    sine += level * std::sin(turn * step / plan.steps);
    cosine += level * std::cos(turn * step / plan.steps);
  }
  if (std::sqrt(sine * sine + cosine * cosine) * 2 / plan.steps < 5) return std::numeric_limits<double>::quiet_NaN();
  const double phase = std::atan2(sine, cosine) / turn;
  return plan.period * (std::round((code + 0.5) / 2 - phase) + phase) - 0.5;
}

}  // namespace

void naivePoints(const SLScanPlan& plan, const SLScanCalibration& head, const std::vector<const std::uint8_t*>& pictures, float* points) {
  const SLScanOptics& camera = head.cameras[0];
  const SLScanOptics& projector = head.projector;
  const double* const r = projector.rotation;
  for (std::int32_t row = 0; row < camera.height; ++row) {
    for (std::int32_t column = 0; column < camera.width; ++column) {
      const auto pixel = static_cast<std::size_t>(row) * static_cast<std::size_t>(camera.width) + static_cast<std::size_t>(column);
      const double x = (column - camera.cx) / camera.fx;
      const double y = (row - camera.cy) / camera.fy;
      const double place = (columnOf(plan, pictures, pixel) - projector.cx) / projector.fx;
      const double rayX = r[0] * x + r[1] * y + r[2];
      const double rayZ = r[6] * x + r[7] * y + r[8];
      const double depth = (place * projector.translation[2] - projector.translation[0]) / (rayX - place * rayZ);
      points[3 * pixel] = static_cast<float>(depth * x);
      points[3 * pixel + 1] = static_cast<float>(depth * y);
      points[3 * pixel + 2] = static_cast<float>(depth);
    }
  }
}

}  // namespace fringix::bench
