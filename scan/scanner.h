// The way from pictures to points, as a whole.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "accumulator.h"
#include "calibration.h"
#include "clean.h"
#include "decode.h"
#include "findings.h"
#include "plan.h"
#include "triangulate.h"
#include "window.h"

namespace fringix::scan {

struct ScanSettings {
  std::size_t threads = 1;
  DecodeLimits decode;
  TriangulationLimits triangulation;
  CleanLimits clean;
};

// Where the results of a camera go: buffers of the caller with one entry per pixel, rows from top to bottom. All but `points` may be
// null: what is not wanted is not made.
struct Cloud {
  float* points = nullptr;            // x, y, z of each pixel in the reference frame in mm; not a number where there is no point
  float* normals = nullptr;           // three again: unit vectors towards the camera
  float* sigma = nullptr;             // expected standard deviation in mm
  std::uint8_t* intensity = nullptr;  // level in the white picture
  std::uint8_t* reason = nullptr;     // a Reason
  float* column = nullptr;            // of the projector, whatever the reason says
  float* modulation = nullptr;
  float* offset = nullptr;
};

class Scanner {
 public:
  Scanner(const PlanSettings& plan, const Calibration& calibration, const ScanSettings& settings);  // throws Failure
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;

  const Plan& plan() const noexcept { return plan_; }
  const Calibration& calibration() const noexcept { return calibration_; }

  // What part of a camera's picture the pictures and the results are; all of it at first. Pictures that were added are forgotten.
  void use(std::size_t camera, const Window& window);
  const Window& window(std::size_t camera) const { return windows_[camera]; }

  // All pictures of a camera at once, in the plan's order.
  Findings compute(std::size_t camera, std::span<const std::uint8_t* const> pictures, const Cloud& cloud);

  // Or one at a time, in that order, and then the points. Both give the same.
  void add(std::size_t camera, const std::uint8_t* picture);
  void nextExposure(std::size_t camera);  // the pictures to come are all of them again, in another exposure
  Findings finish(std::size_t camera, const Cloud& cloud);
  void forget(std::size_t camera);  // the pictures that were added

 private:
  class Run;
  using Exposures = std::vector<std::unique_ptr<Accumulator>>;

  void requireCamera(std::size_t camera) const;
  void requireComplete(std::size_t camera) const;

  Plan plan_;
  Calibration calibration_;
  ScanSettings settings_;
  Decoder decoder_;
  std::vector<Window> windows_;  // of each camera, like the next two
  std::vector<Triangulator> triangulators_;
  std::vector<Exposures> exposures_;  // none before the first picture was added
};

}  // namespace fringix::scan
