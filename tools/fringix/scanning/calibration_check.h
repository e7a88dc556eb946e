// Whether a calibration is that of the head that it is used with: asked before the head measures.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <string>
#include <vector>

namespace fringix::tool {

// All throw Failure, with what to do.
void requireCamera(const SLScanCalibration& calibration, std::uint32_t channel);
void requireCameraSize(const SLScanCalibration& calibration, std::uint32_t channel, Size size);
void requireProjectorSize(const SLScanCalibration& calibration, Size size);

// What a user ought to know of a calibration that can be used all the same.
std::vector<std::string> cautionsAbout(const SLScanCalibration& calibration, std::int32_t serial);

}  // namespace fringix::tool
