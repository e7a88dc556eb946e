#include "head/optics/blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace fringix::head {

namespace {

constexpr double sharpest = 0.6;
constexpr double step = 1.12;

// The shares of the pixels around it in the light at each place in a pixel, both its edges included.
struct Kernel {
  std::int32_t reach;  // to each side, in pixels
  std::array<std::vector<float>, BlurredPlace::placesPerPixel + 1> weights;
};

// The light of a pixel at a distance from its middle.
double pixelLight(double distance, double blur) {
  const double scale = 1 / (blur * std::numbers::sqrt2);
  return (std::erf((distance + 0.5) * scale) - std::erf((distance - 0.5) * scale)) / 2;
}

Kernel makeKernel(double blur) {
  constexpr double widths = 4;
  Kernel kernel{static_cast<std::int32_t>(std::ceil(0.5 + widths * blur)), {}};
  for (std::size_t place = 0; place < kernel.weights.size(); ++place) {
    const double offset = static_cast<double>(place) / BlurredPlace::placesPerPixel - 0.5;
    std::vector<double> weights;
    double sum = 0;
    for (std::int32_t pixel = -kernel.reach; pixel <= kernel.reach; ++pixel) sum += weights.emplace_back(pixelLight(offset - pixel, blur));
    for (const double weight : weights) kernel.weights[place].push_back(static_cast<float>(weight / sum));
  }
  return kernel;
}

const Kernel& kernelOf(std::uint32_t level) {
  static const auto kernels = [] {
    std::vector<Kernel> made;
    for (std::uint32_t i = 0; i < blurLevels; ++i) made.push_back(makeKernel(blurOf(i)));
    return made;
  }();
  return kernels[level];
}

// Light is never negative.
Brightness rounded(float light) { return static_cast<Brightness>(light + 0.5F); }  // NOLINT(bugprone-incorrect-roundings)

// The profile with its ends repeated, so that no kernel reaches beyond it.
std::vector<float> extended(const std::vector<Brightness>& profile, std::int32_t reach) {
  const auto margin = static_cast<std::size_t>(reach);
  std::vector<float> longer(margin, profile.front());
  longer.insert(longer.end(), profile.begin(), profile.end());
  longer.insert(longer.end(), margin + 1, profile.back());
  return longer;
}

void blur(const std::vector<Brightness>& profile, const Kernel& kernel, Brightness* table, std::size_t size) {
  const std::vector<float> pixels = extended(profile, kernel.reach);
  for (std::size_t i = 0; i < size; ++i) {
    const std::vector<float>& weights = kernel.weights[i % BlurredPlace::placesPerPixel];
    const float* first = pixels.data() + std::min(i / BlurredPlace::placesPerPixel, profile.size());
    float sum = 0;
    for (std::size_t k = 0; k < weights.size(); ++k) sum += weights[k] * first[k];
    table[i] = rounded(sum);
  }
}

// The pixels that light a place, and their shares.
struct Window {
  std::array<float, 128> weights;
  std::int32_t first;
  std::int32_t count;
};

Window windowAt(const BlurredPlace& at) {
  const Kernel& kernel = kernelOf(at.level);
  const std::uint32_t place = at.index >> BlurredPlace::fractionBits;
  const float part = static_cast<float>(at.index & ((1U << BlurredPlace::fractionBits) - 1)) / (1U << BlurredPlace::fractionBits);
  const std::vector<float>& before = kernel.weights[place % BlurredPlace::placesPerPixel];
  const std::vector<float>& behind = kernel.weights[place % BlurredPlace::placesPerPixel + 1];
  const auto pixel = static_cast<std::int32_t>(place / BlurredPlace::placesPerPixel);
  Window window{{}, pixel - kernel.reach, 2 * kernel.reach + 1};
  for (std::size_t i = 0; i < before.size(); ++i) window.weights[i] = before[i] + (behind[i] - before[i]) * part;
  return window;
}

}  // namespace

double blurOf(std::uint32_t level) { return sharpest * std::pow(step, level); }

std::uint32_t blurLevelFor(double blur) {
  const double level = std::log(std::max(blur, sharpest) / sharpest) / std::log(step);
  return static_cast<std::uint32_t>(std::min<double>(std::round(level), blurLevels - 1));
}

std::uint32_t BlurredPlace::encode(double place, std::uint32_t level, std::int32_t extent) {
  const double index = std::clamp(place + 0.5, 0.0, 1.0 * extent) * (placesPerPixel << fractionBits);
  return level * (tableSize(extent) << fractionBits) + static_cast<std::uint32_t>(std::lround(index));
}

std::vector<Brightness> blurredProfile(const std::vector<Brightness>& profile, const std::vector<bool>& levels) {
  const std::size_t size = BlurredPlace::tableSize(static_cast<std::int32_t>(profile.size()));
  std::vector<Brightness> tables(levels.size() * size);
  for (std::size_t level = 0; level < levels.size(); ++level) {
    if (levels[level]) blur(profile, kernelOf(static_cast<std::uint32_t>(level)), tables.data() + level * size, size);
  }
  return tables;
}

Brightness blurredLight(const Light& light, const BlurredPlace& column, const BlurredPlace& row) {
  const Window across = windowAt(column);
  const Window down = windowAt(row);
  float sum = 0;
  for (std::int32_t j = 0; j < down.count; ++j) {
    const std::int32_t y = std::clamp(down.first + j, 0, light.size.height - 1);
    const Brightness* pixels = light.values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(light.size.width);
    float line = 0;
    for (std::int32_t i = 0; i < across.count; ++i)
      line +=
          across.weights[static_cast<std::size_t>(i)] * static_cast<float>(pixels[std::clamp(across.first + i, 0, light.size.width - 1)]);
    sum += down.weights[static_cast<std::size_t>(j)] * line;
  }
  return rounded(sum);
}

}  // namespace fringix::head
