#include "head/camera.h"

#include <algorithm>
#include <cmath>

namespace fringix::head {

namespace {

constexpr double surroundings = 10;  // grey levels of the light that is always there
constexpr int factorBits = 8;
constexpr double largestFactor = 15;  // keeps the product of light, reflectance and factor within 32 bits

}  // namespace

Camera::Camera(const HeadSettings& settings, std::uint32_t channel) : settings_(settings), channel_(channel) {}

void Camera::take(const Lighting& lighting, std::uint64_t number, Picture& picture) {
  if (map_ == nullptr) map_ = lightMapFor(settings_.camera, settings_.projector, channel_);
  if (clean_.pixels.empty() || version_ != lighting.version) render(lighting);
  if (!noise_ || noiseGain_ != lighting.gain) {
    noise_.emplace(settings_.noiseSeed + channel_, settings_.noise * lighting.gain);
    noiseGain_ = lighting.gain;
  }
  noise_->addTo(clean_, number, picture);
}

void Camera::render(const Lighting& lighting) {
  const double strength = std::clamp(lighting.brightness * lighting.gain, 0.0, largestFactor);
  const auto factor = static_cast<std::uint32_t>(std::lround(strength * (1 << factorBits)));
  const auto base = static_cast<std::uint32_t>(std::clamp(surroundings * lighting.gain, 1.0, 255.0));
  clean_.resize(settings_.camera);
  for (std::size_t i = 0; i < clean_.pixels.size(); ++i) {
    const std::uint32_t lit = std::uint32_t{lighting.light[map_->source[i]]} * map_->reflectance[i] * factor;
    clean_.pixels[i] = static_cast<std::uint8_t>(std::min(base + (lit >> (LightMap::reflectanceBits + factorBits)), 255U));
  }
  version_ = lighting.version;
}

}  // namespace fringix::head
