// Which light reaches each pixel of a camera: worked out once, so that a picture is one look-up a pixel.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "head/settings/head_settings.h"

namespace fringix::head {

struct LightMap {
  static constexpr int reflectanceBits = 12;  // a reflectance of 1 is 1 << 12

  std::vector<std::uint32_t> source;       // the projector pixel, by rows, that lights it; the number of projector pixels for none
  std::vector<std::uint16_t> reflectance;  // the share of that light that reaches the camera
};

// The scene is the same for all heads of a process, so maps of equal sizes are shared while any head holds them.
std::shared_ptr<const LightMap> lightMapFor(Size camera, Size projector, std::uint32_t channel);

}  // namespace fringix::head
