// Which light reaches each pixel of a camera: worked out once for a scene, so that a picture is one look-up a pixel.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "head/optics/view.h"
#include "head/scene/scene.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

// For each pixel what LitPixel has.
struct LightMap {
  View view;
  std::vector<std::uint32_t> column{};
  std::vector<std::uint32_t> row{};
  std::vector<std::uint16_t> reflectance{};
  std::vector<bool> blurs{};  // for each level of blur whether it may occur
};

// Equal maps are shared by all heads of a process.
std::shared_ptr<const LightMap> lightMapFor(const HeadSettings& settings, std::uint32_t channel, const std::shared_ptr<const Scene>& scene);

}  // namespace fringix::head
