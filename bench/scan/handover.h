// What a program in another language needs to make points of the same pictures, and to compare them and its time with the library's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fringix/scan.h"

namespace fringix::bench {

struct Handover {
  const SLScanPlan& plan;
  const SLScanCalibration& head;
  const std::vector<std::vector<std::uint8_t>>& pictures;
  const std::vector<float>& points;
  const std::vector<float>& sigma;
  double seconds;  // of one core, for the points
};

// Leaves pictures.bin, points.bin and sigma.bin (32-bit floats of this machine), calibration.json and scan.json, which tells what is in
// them.
void handOver(const std::string& folder, const Handover& handover);

}  // namespace fringix::bench
