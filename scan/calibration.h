// What is known of the optics: pinholes with lenses, and where they stand. Lengths in millimetres; x to the right, y down, z forward;
// pixel centres have integer coordinates, (0, 0) is the centre of the top left pixel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "geometry.h"
#include "lens.h"

namespace fringix::scan {

// A camera or the projector. A point p of the reference frame, that of camera 0, is at rotation * p + translation in its own frame.
struct Optics {
  std::int32_t width = 0;
  std::int32_t height = 0;
  double fx = 0;
  double fy = 0;
  double cx = 0;
  double cy = 0;
  Distortion distortion;
  Matrix rotation = identity;
  Vector translation{};

  Place normalised(double column, double row) const { return {(column - cx) / fx, (row - cy) / fy}; }
};

struct Calibration {
  std::int32_t serial = 0;
  std::string date;  // YYYY-MM-DD
  std::vector<Optics> cameras;
  Optics projector;
};

inline constexpr std::size_t mostCameras = 4;

// Throws a Failure with the reason when the numbers cannot be those of a head.
void check(const Calibration& calibration);

}  // namespace fringix::scan
