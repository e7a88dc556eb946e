// What comes out of a scan.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "clouds/point_grid.h"
#include "scanning/decoder.h"
#include "scanning/repeatability.h"
#include "scanning/scan_task.h"
#include "scanning/truth.h"

namespace fringix::tool {

struct ScanResult {
  ScanTask task;
  Decoded decoded;            // of all cameras, the pixels of one behind those of the other
  std::uint64_t lit = 0;      // pixels that the patterns reach
  double medianSigma = 0;     // in mm
  std::vector<float> errors;  // of each point, pixels without a point left out; empty without a truth
  std::optional<ErrorFigures> trueError;
  Repeatability repeatability;  // of this scan and those before it

  std::uint32_t cameras() const { return static_cast<std::uint32_t>(task.channels.size()); }
  std::uint32_t width() const { return wantedRegion(task).width; }
  std::uint32_t height() const { return wantedRegion(task).height; }
  std::uint64_t pixels() const { return std::uint64_t{width()} * height() * cameras(); }
  const SLScanFindings& findings() const { return decoded.cloud.findings; }
  std::uint64_t points() const { return findings().counts[SLSCAN_POINT]; }
  PointGrid grid() const {  // in mm, one camera below the other
    return {width(), height() * cameras(), decoded.cloud.points, decoded.cloud.normals, decoded.cloud.sigma, decoded.cloud.intensity};
  }
};

}  // namespace fringix::tool
