// Pictures to points as it is first written down: double numbers, a pixel at a time, the library functions for sines and angles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fringix/scan.h"

namespace fringix::bench {

// Default plans of Gray code and phase only.
void naivePoints(const SLScanPlan& plan, const SLScanCalibration& head, const std::vector<const std::uint8_t*>& pictures, float* points);

}  // namespace fringix::bench
