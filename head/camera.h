// One camera of the head: turns the projector's light into pictures of the scene.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "head/head_settings.h"
#include "head/light_map.h"
#include "head/noise.h"
#include "head/picture.h"

namespace fringix::head {

// What makes a picture bright. `version` changes whenever anything else here does, so that a camera need not compare.
struct Lighting {
  const std::vector<std::uint8_t>& light;  // as Projector::light gives it
  double brightness;                       // of the lamp: 1 is its usual power
  double gain;                             // of the sensor: multiplies light, surroundings and noise
  std::uint64_t version;
};

class Camera {
 public:
  Camera(const HeadSettings& settings, std::uint32_t channel);

  // Takes picture number `number`. Pixels are 1 to 255.
  void take(const Lighting& lighting, std::uint64_t number, Picture& picture);

 private:
  void render(const Lighting& lighting);

  const HeadSettings& settings_;
  std::uint32_t channel_;
  std::shared_ptr<const LightMap> map_;  // made for the first picture
  std::optional<Noise> noise_;           // for `noiseGain_`
  double noiseGain_ = 0;
  Picture clean_;  // without noise, for `version_`
  std::uint64_t version_ = 0;
};

}  // namespace fringix::head
