// One camera of the head: turns the projector's light into pictures of the scene.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "head/optics/exposed_image.h"
#include "head/optics/light.h"
#include "head/optics/light_map.h"
#include "head/optics/noise.h"
#include "head/optics/picture.h"
#include "head/optics/sensor_light.h"
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

  // What it sees, as lightMapFor gives it; needed before the first picture.
  void use(std::shared_ptr<const LightMap> map);
  bool sees() const { return map_ != nullptr; }

  // Takes picture number `number` of the light. Pixels are 1 to 255. `moment` counts what all cameras take together: it says where
  // something that moves is.
  void take(const Light& light, const Exposure& exposure, std::uint64_t moment, std::uint64_t number, Picture& picture);

 private:
  void render(const Light& light, const Exposure& exposure);
  void renderMoving(const Light& light, std::uint64_t moment);

  const HeadSettings& settings_;
  std::shared_ptr<const LightMap> map_;
  Noise noise_;
  std::optional<SensorLight> sensor_;  // for `exposure_`
  ExposedImage still_;                 // without what moves and without noise, for `exposure_`; empty until there is one
  ExposedImage moved_;
  Exposure exposure_;
};

}  // namespace fringix::head
