#include "scanning/calibration_check.h"

#include <fmt/format.h>

#include <utility>

#include "console/explain.h"

namespace fringix::tool {
namespace {

void requireSize(const char* device, const SLScanOptics& optics, Size size) {
  if (std::cmp_equal(optics.width, size.width) && std::cmp_equal(optics.height, size.height)) return;
  throw Failure({fmt::format("the calibration is of a {} with {} x {} pixels, but this one has {} x {}", device, optics.width,
                             optics.height, size.width, size.height),
                 "Give the calibration of this head with --calibration FILE."});
}

}  // namespace

void requireCamera(const SLScanCalibration& calibration, std::uint32_t channel) {
  if (channel < static_cast<std::uint32_t>(calibration.cameraCount)) return;
  throw Failure({fmt::format("the calibration has no camera {}: it knows {}", channel, calibration.cameraCount),
                 "Cameras count from 0: give another --channel."});
}

void requireCameraSize(const SLScanCalibration& calibration, std::uint32_t channel, Size size) {
  requireSize("camera", calibration.cameras[channel], size);
}

void requireProjectorSize(const SLScanCalibration& calibration, Size size) { requireSize("projector", calibration.projector, size); }

std::vector<std::string> cautionsAbout(const SLScanCalibration& calibration, std::int32_t serial) {
  if (calibration.serial == serial) return {};
  return {fmt::format("the calibration is that of head {}, and this is head {}", calibration.serial, serial)};
}

}  // namespace fringix::tool
