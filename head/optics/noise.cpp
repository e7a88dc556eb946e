#include "head/optics/noise.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace fringix::head {

namespace {

constexpr std::size_t startCount = 1 << 16;  // places in the samples at which a row can begin
constexpr double sampleUnit = 1 << 11;       // a sample of 1
constexpr std::size_t longestRow = 16384;

// Between 0 and 1, without both.
double takeUniform(std::mt19937_64& generator) { return (static_cast<double>(generator() >> 11) + 0.5) / 9007199254740992.0; }

// Normally distributed. The distributions of the standard library are another one on each system.
std::int16_t takeSample(std::mt19937_64& generator) {
  const double radius = std::sqrt(-2 * std::log(takeUniform(generator)));
  const double normal = radius * std::cos(2 * std::numbers::pi * takeUniform(generator));
  return static_cast<std::int16_t>(std::lround(normal * sampleUnit));
}

// Spreads a number over all 64 bits.
std::uint64_t mix(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
  value = (value ^ value >> 27) * 0x94D049BB133111EBU;
  return value ^ value >> 31;
}

constexpr float level = 1.0F / ExposedImage::fractions;

std::uint8_t roundedTo255(float read) {
  read += 0.5F;
  return static_cast<std::uint8_t>(static_cast<int>(read < 1 ? 1.0F : read > 255 ? 255.0F : read));
}

void readRow(const std::uint16_t* light, std::size_t count, std::uint8_t* row) {
  for (std::size_t i = 0; i < count; ++i) row[i] = roundedTo255(static_cast<float>(light[i]) * level);
}

void readNoisyRow(const std::uint16_t* light, const std::int16_t* samples, std::size_t count, const NoiseKind& kind, std::uint8_t* row) {
  const auto unit = static_cast<float>(1 / sampleUnit);
  const auto variance = static_cast<float>(kind.deviation * kind.deviation);
  const auto shot = static_cast<float>(kind.shot);
  for (std::size_t i = 0; i < count; ++i) {
    const float signal = static_cast<float>(light[i]) * level;
    const float noise = std::sqrt(variance + shot * signal) * unit * static_cast<float>(samples[i]);
    row[i] = roundedTo255(signal + noise);
  }
}

std::vector<std::int16_t> takeSamples(std::uint64_t seed) {
  std::mt19937_64 generator(seed);
  std::vector<std::int16_t> samples(startCount);
  for (auto& sample : samples) sample = takeSample(generator);
  samples.resize(startCount + longestRow);
  std::copy_n(samples.begin(), longestRow, samples.begin() + startCount);
  return samples;
}

}  // namespace

Noise::Noise(std::uint64_t seed) : seed_(mix(seed + 1)) {}

void Noise::readOut(const ExposedImage& image, const NoiseKind& kind, std::uint64_t number, Picture& picture) {
  picture.resize(image.size);
  const bool isSilent = kind == NoiseKind{};
  if (!isSilent && samples_.empty()) samples_ = takeSamples(seed_);
  const auto width = static_cast<std::size_t>(image.size.width);
  for (std::int32_t y = 0; y < image.size.height; ++y) {
    const std::uint16_t* const light = image.pixels.data() + static_cast<std::size_t>(y) * width;
    const std::uint64_t start = mix(mix(seed_ + number) + static_cast<std::uint64_t>(y)) % startCount;
    if (isSilent)
      readRow(light, width, picture.row(y));
    else
      readNoisyRow(light, samples_.data() + start, width, kind, picture.row(y));
  }
}

}  // namespace fringix::head
