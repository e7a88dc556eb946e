#include "head/optics/camera.h"

#include <algorithm>
#include <utility>

#include "head/optics/passing_ball.h"

namespace fringix::head {

namespace {

constexpr double mostBrightening = 15;

Brightening brighteningFor(const Exposure& exposure, double ambient) {
  const double sensitivity = exposure.time * exposure.gain;
  return {std::min(exposure.lamp * sensitivity, mostBrightening), std::clamp(ambient * sensitivity, 0.0, 255.0)};
}

}  // namespace

Camera::Camera(const HeadSettings& settings, std::uint32_t channel) : settings_(settings), noise_(settings.noiseSeed + channel) {}

void Camera::use(std::shared_ptr<const LightMap> map) {
  map_ = std::move(map);
  still_.pixels.clear();
}

void Camera::take(const Light& light, const Exposure& exposure, std::uint64_t moment, std::uint64_t number, Picture& picture) {
  if (still_.pixels.empty() || exposure_ != exposure) render(light, exposure);
  if (settings_.motion > 0) renderMoving(light, moment);
  const NoiseKind kind{settings_.noise * exposure.gain, settings_.shotNoise * exposure.gain};
  noise_.readOut(settings_.motion > 0 ? moved_ : still_, kind, number, picture);
}

void Camera::render(const Light& light, const Exposure& exposure) {
  sensor_.emplace(*map_, light, brighteningFor(exposure, settings_.ambient));
  sensor_->fill(light, still_);
  exposure_ = exposure;
}

void Camera::renderMoving(const Light& light, std::uint64_t moment) {
  const Sphere ball = passingBall(settings_, moment);
  const auto width = static_cast<std::size_t>(settings_.camera.width);
  moved_ = still_;
  for (const std::size_t pixel : pixelsChangedBy(ball, *map_)) {
    const std::size_t row = pixel / width;
    const ImagePoint place{static_cast<double>(pixel % width), static_cast<double>(row)};
    moved_.pixels[pixel] = sensor_->at(light, map_->view.look(place, &ball));
  }
}

}  // namespace fringix::head
