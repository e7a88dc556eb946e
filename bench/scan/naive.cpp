#include "naive.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "lens.h"

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

// Behind a lens a column is no plane: where the light leaves the projector follows from the row, and that from the depth.
double depthOf(const SLScanOptics& projector, const Place& ray, double shown) {
  const double* const r = projector.rotation;
  const double* const t = projector.translation;
  const double x = r[0] * ray.x + r[1] * ray.y + r[2];
  const double y = r[3] * ray.x + r[4] * ray.y + r[5];
  const double z = r[6] * ray.x + r[7] * ray.y + r[8];
  double place = shown;
  double depth = 0;
  for (int round = 0; round < 5; ++round) {
    depth = (place * t[2] - t[0]) / (x - place * z);
    const double row = (depth * y + t[1]) / (depth * z + t[2]);
    place += shown - distorted(projector.distortion, {place, row}).x;
  }
  return depth;
}

}  // namespace

void naivePoints(const SLScanPlan& plan, const SLScanCalibration& head, const std::vector<const std::uint8_t*>& pictures, float* points) {
  const SLScanOptics& camera = head.cameras[0];
  const SLScanOptics& projector = head.projector;
  for (std::int32_t row = 0; row < camera.height; ++row) {
    for (std::int32_t column = 0; column < camera.width; ++column) {
      const auto pixel = static_cast<std::size_t>(row) * static_cast<std::size_t>(camera.width) + static_cast<std::size_t>(column);
      const Place ray = undistorted(camera.distortion, {(column - camera.cx) / camera.fx, (row - camera.cy) / camera.fy});
      const double depth = depthOf(projector, ray, (columnOf(plan, pictures, pixel) - projector.cx) / projector.fx);
      points[3 * pixel] = static_cast<float>(depth * ray.x);
      points[3 * pixel + 1] = static_cast<float>(depth * ray.y);
      points[3 * pixel + 2] = static_cast<float>(depth);
    }
  }
}

}  // namespace fringix::bench
