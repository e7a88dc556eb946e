#include "head/optics/noise.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace fringix::head {

namespace {

constexpr std::size_t sampleCount = 1 << 16;
constexpr int uniformsPerSample = 4;  // their sum is close to a normal distribution

std::int8_t makeSample(std::mt19937_64& generator, double deviation) {
  constexpr double range = static_cast<double>(std::mt19937_64::max());
  double sum = -uniformsPerSample / 2.0;
  for (int i = 0; i < uniformsPerSample; ++i) sum += static_cast<double>(generator()) / range;
  const double sumDeviation = std::sqrt(uniformsPerSample / 12.0);
  return static_cast<std::int8_t>(std::clamp(std::lround(sum / sumDeviation * deviation), -127L, 127L));
}

// Spreads a number over all 64 bits.
std::uint64_t mix(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
  value = (value ^ value >> 27) * 0x94D049BB133111EBU;
  return value ^ value >> 31;
}

}  // namespace

Noise::Noise(std::uint64_t seed, double deviation) : seed_(mix(seed + 1)) {
  if (deviation <= 0) return;
  std::mt19937_64 generator(seed_);
  samples_.resize(sampleCount);
  for (auto& sample : samples_) sample = makeSample(generator, deviation);
}

void Noise::addTo(const Picture& picture, std::uint64_t number, Picture& noisy) const {
  noisy = picture;
  if (samples_.empty()) return;
  for (std::int32_t y = 0; y < noisy.size.height; ++y) {
    std::uint8_t* row = noisy.row(y);
    const std::uint64_t start = mix(mix(seed_ + number) + static_cast<std::uint64_t>(y));
    for (std::int32_t x = 0; x < noisy.size.width; ++x) {
      const int sample = samples_[(start + static_cast<std::uint64_t>(x)) % sampleCount];
      row[x] = static_cast<std::uint8_t>(std::clamp(row[x] + sample, 1, 255));
    }
  }
}

}  // namespace fringix::head
