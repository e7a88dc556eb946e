// A wall with a step, seen by a head of 1280 x 1024 pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "fringix/scan.h"

namespace fringix::bench {

SLScanCalibration benchHead();
std::vector<std::vector<std::uint8_t>> benchPictures(const SLScanPlan& plan, const SLScanCalibration& head);

}  // namespace fringix::bench
