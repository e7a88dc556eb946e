// From projector columns to points.
#pragma once

#include <cstddef>
#include <vector>

#include "calibration.h"
#include "decode.h"
#include "strip.h"
#include "window.h"

namespace fringix::scan {

struct TriangulationLimits {
  double sigma = 0.1;  // largest expected standard deviation of a point, in mm
  double nearest = 0;  // depths (z in the camera's frame) that are wanted, in mm
  double farthest = 1e6;
};

// Points in the reference frame, in mm; not a number where there is none.
struct PointStrip {
  Strip<float> x;
  Strip<float> y;
  Strip<float> z;
  Strip<float> sigma;  // standard deviation along the camera's ray
};

class Triangulator {
 public:
  // Makes the table of the camera's rays, those of the window only.
  Triangulator(const Calibration& calibration, std::size_t camera, const Window& window, const TriangulationLimits& limits,
               std::size_t threads);

  // Makes points of the window's pixels from strip * stripLength on, and adds reasons for those that have none so far.
  void triangulate(std::size_t strip, DecodedStrip& decoded, PointStrip& points) const;

 private:
  struct Rays;
  struct Columns;

  void makeRays(const Optics& camera, std::int32_t row);
  void turnRays(std::size_t strip, Rays& rays) const;
  void straighten(const DecodedStrip& decoded, const Rays& rays, Columns& columns) const;
  void improve(const DecodedStrip& decoded, Columns& columns) const;
  void intersect(const Rays& rays, const Columns& columns, DecodedStrip& decoded, PointStrip& points) const;
  void leaveCamera(std::size_t strip, DecodedStrip& decoded, PointStrip& points) const;

  Optics projector_;
  TriangulationLimits limits_;
  Matrix toProjector_;  // turns a ray of the camera into the projector's frame
  Vector seenFrom_;     // the camera's pinhole in that frame
  Matrix toReference_;  // turns a ray of the camera into the reference frame
  Vector pinhole_;      // the camera's, in that frame
  Window window_;
  std::vector<float> rayX_;
  std::vector<float> rayY_;
};

}  // namespace fringix::scan
