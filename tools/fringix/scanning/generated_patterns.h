// The patterns that a head makes by itself, in place of uploaded lines, for heads that count them as docs/simulated-head.md tells.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>

namespace fringix::tool {

// Its half period is a power of two, because the generators' Gray code numbers single columns.
SLScanPlan generatedPlan(std::int32_t projectorWidth);

// Makes a picture of that plan, or, with the first step of the phase, all steps at once.
void generatePicture(const Device& head, std::uint32_t sequence, const SLScanPlan& plan, std::int32_t index);

// The generators' phase is 0 in the middle of the first column, a plan's at its left border.
SLScanCalibration forGeneratedPatterns(SLScanCalibration calibration);

}  // namespace fringix::tool
