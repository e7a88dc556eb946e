#include "scanning/repeatability.h"

#include <cmath>

#include "scanning/truth.h"

namespace fringix::tool {

void Repeatability::add(std::span<const float> points) {
  ++scans_;
  pixels_.resize(points.size() / 3);
  for (std::size_t i = 0; i < pixels_.size(); ++i) {
    const double distance = std::hypot(points[3 * i], points[3 * i + 1], points[3 * i + 2]);
    if (!std::isfinite(distance)) continue;
    Pixel& pixel = pixels_[i];
    const double before = distance - pixel.mean;
    pixel.mean += before / ++pixel.count;
    pixel.squares += before * (distance - pixel.mean);
  }
}

double Repeatability::medianDeviation() const {
  if (scans_ < 2) return 0;
  std::vector<float> deviations;
  for (const Pixel& pixel : pixels_) {
    if (pixel.count == scans_) deviations.push_back(static_cast<float>(std::sqrt(pixel.squares / static_cast<double>(scans_ - 1))));
  }
  return quantile(std::move(deviations), 0.5);
}

}  // namespace fringix::tool
