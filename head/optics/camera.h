// One camera of the head: turns the projector's light into pictures of the scene.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "head/optics/light_map.h"
#include "head/optics/noise.h"
#include "head/optics/picture.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

// What makes a picture bright. The factors are 1 at the start.
struct Exposure {
  std::uint64_t lightVersion = 0;  // as Projector::lightVersion gives it: no two different lights share one
  double lamp = 1;                 // multiplies the projector's light
  double time = 1;                 // multiplies that and the surroundings' light
  double gain = 1;                 // multiplies all that and the noise
  bool operator==(const Exposure&) const = default;
};

class Camera {
 public:
  Camera(const HeadSettings& settings, std::uint32_t channel);

  // Takes picture number `number` of the light that Projector::light gives. Pixels are 1 to 255.
  void take(const std::vector<std::uint8_t>& light, const Exposure& exposure, std::uint64_t number, Picture& picture);

 private:
  void render(const std::vector<std::uint8_t>& light, const Exposure& exposure);

  const HeadSettings& settings_;
  std::uint32_t channel_;
  std::shared_ptr<const LightMap> map_;  // made for the first picture
  std::optional<Noise> noise_;           // for `noiseGain_`
  double noiseGain_ = 0;
  Picture clean_;  // without noise, for `exposure_`
  Exposure exposure_;
};

}  // namespace fringix::head
