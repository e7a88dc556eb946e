#include "head/optics/camera.h"

#include <algorithm>
#include <cmath>

namespace fringix::head {

namespace {

constexpr double surroundings = 10;  // grey levels of the light that is always there
constexpr int factorBits = 8;
constexpr double largestFactor = 15;  // keeps the product of light, reflectance and factor within 32 bits

}  // namespace

Camera::Camera(const HeadSettings& settings, std::uint32_t channel) : settings_(settings), channel_(channel) {}

void Camera::take(const std::vector<std::uint8_t>& light, const Exposure& exposure, std::uint64_t number, Picture& picture) {
  if (map_ == nullptr) map_ = lightMapFor(settings_.camera, settings_.projector, channel_);
  if (clean_.pixels.empty() || exposure_ != exposure) render(light, exposure);
  if (!noise_ || noiseGain_ != exposure.gain) {
    noise_.emplace(settings_.noiseSeed + channel_, settings_.noise * exposure.gain);
    noiseGain_ = exposure.gain;
  }
  noise_->addTo(clean_, number, picture);
}

void Camera::render(const std::vector<std::uint8_t>& light, const Exposure& exposure) {
  const double sensitivity = exposure.time * exposure.gain;
  const double strength = std::min(exposure.lamp * sensitivity, largestFactor);
  const auto factor = static_cast<std::uint32_t>(std::lround(strength * (1 << factorBits)));
  const auto base = static_cast<std::uint32_t>(std::clamp(surroundings * sensitivity, 1.0, 255.0));
  clean_.resize(settings_.camera);
  for (std::size_t i = 0; i < clean_.pixels.size(); ++i) {
    const std::uint32_t lit = std::uint32_t{light[map_->source[i]]} * map_->reflectance[i] * factor;
    clean_.pixels[i] = static_cast<std::uint8_t>(std::min(base + (lit >> (LightMap::reflectanceBits + factorBits)), 255U));
  }
  exposure_ = exposure;
}

}  // namespace fringix::head
