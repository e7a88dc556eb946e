// How projector and cameras are mounted in a head: what its calibration tells.
#pragma once

#include <cstdint>

#include "head/geometry/optics.h"
#include "head/geometry/pose.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

inline constexpr std::uint32_t channelCount = 2;  // cameras of a head

Optics projectorOptics(Size projector);
Optics cameraOptics(Size camera, std::uint32_t channel);  // channel 0 stands at the origin and looks along z

// Takes points of the measuring volume into the frame of camera 0. Its origin is 500 mm before the projector, where all optics look;
// its z axis is the projector's, pointing away from it.
Pose measuringVolume();

}  // namespace fringix::head
