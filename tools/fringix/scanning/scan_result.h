// What a scan is made of and what comes out of it.
#pragma once

#include <cstdint>
#include <fringix/scan.hpp>
#include <optional>
#include <string>
#include <vector>

#include "clouds/point_grid.h"
#include "scanning/decoder.h"
#include "scanning/repeatability.h"
#include "scanning/steps.h"
#include "scanning/truth.h"

namespace fringix::tool {

struct ScanTask {
  SLScanPlan plan{};
  SLScanSettings settings{};
  std::uint32_t channel = 0;
  std::string calibrationText;
  SLScanCalibration calibration{};      // what the text says
  std::vector<std::string> cautions{};  // what is odd and does not hinder
  std::string truthText;                // empty: nobody asked for it
};

struct ScanResult {
  ScanTask task;
  Decoded decoded;
  std::uint64_t lit = 0;      // pixels that the patterns reach
  double medianSigma = 0;     // in mm
  std::vector<float> errors;  // of each point, pixels without a point left out; empty without a truth
  std::optional<ErrorFigures> trueError;
  Repeatability repeatability;  // of this scan and those before it

  const SLScanOptics& optics() const { return task.calibration.cameras[task.channel]; }
  std::uint32_t width() const { return static_cast<std::uint32_t>(optics().width); }
  std::uint32_t height() const { return static_cast<std::uint32_t>(optics().height); }
  std::uint64_t pixels() const { return std::uint64_t{width()} * height(); }
  const SLScanFindings& findings() const { return decoded.cloud.findings; }
  std::uint64_t points() const { return findings().counts[SLSCAN_POINT]; }
  PointGrid grid() const {  // in mm
    return {width(), height(), decoded.cloud.points, decoded.cloud.normals, decoded.cloud.sigma, decoded.cloud.intensity};
  }
};

}  // namespace fringix::tool
