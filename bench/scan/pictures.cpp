#include "pictures.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "fringix/scan.hpp"
#include "lens.h"

namespace fringix::bench {

namespace {

constexpr double wall = 500;
constexpr double step = 480;

// The column of the projector that lights a pixel.
double columnAt(const SLScanCalibration& head, std::int32_t column, std::int32_t row) {
  const SLScanOptics& camera = head.cameras[0];
  const SLScanOptics& projector = head.projector;
  const Place ray = undistorted(camera.distortion, {(column - camera.cx) / camera.fx, (row - camera.cy) / camera.fy});
  const double depth = (column / 160 + row / 128) % 2 == 0 ? wall : step;
  return projector.fx * distorted(projector.distortion, {ray.x + projector.translation[0] / depth, ray.y}).x + projector.cx;
}

std::vector<double> columnsOfAllPixels(const SLScanCalibration& head) {
  std::vector<double> columns;
  for (std::int32_t row = 0; row < head.cameras[0].height; ++row) {
    for (std::int32_t column = 0; column < head.cameras[0].width; ++column) columns.push_back(columnAt(head, column, row));
  }
  return columns;
}

double between(const std::vector<std::uint8_t>& line, double column) {
  const double place = std::clamp(column, 0.0, static_cast<double>(line.size()) - 1.001);
  const auto index = static_cast<std::size_t>(place);
  const double share = place - static_cast<double>(index);
  return (1 - share) * line[index] + share * line[index + 1];
}

}  // namespace

SLScanCalibration benchHead() {
  SLScanCalibration head = {};
  head.serial = 1;
  std::copy_n("2024-01-01", 11, head.date);
  head.cameraCount = 1;
  head.cameras[0] = {1280, 1024, 1400, 1400, 640, 512, {-0.118, 0.094, 0.0004, -0.0003, -0.021}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {}};
  head.projector = {1280, 1280, 1200, 1200, 1000, 640, {0.062, -0.051, 0.0006, -0.0004, 0.009}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {-150, 0, 0}};
  return head;
}

std::vector<std::vector<std::uint8_t>> benchPictures(const SLScanPlan& plan, const SLScanCalibration& head) {
  const std::vector<double> columns = columnsOfAllPixels(head);
  std::vector<std::vector<std::uint8_t>> pictures;
  std::minstd_rand chance(1);
  for (std::int32_t i = 0; i < scan::pictureCount(plan); ++i) {
    const auto line = scan::line(plan, i);
    std::vector<std::uint8_t>& picture = pictures.emplace_back();
    for (const double column : columns) {
      const double noise = static_cast<double>(chance() % 1000 + chance() % 1000 + chance() % 1000) / 500 - 3;
      const double level = 10 + 200 / 255.0 * between(line, column) + noise;
      picture.push_back(static_cast<std::uint8_t>(std::lround(level)));
    }
  }
  return pictures;
}

}  // namespace fringix::bench
