#include "scanning/repeatability.h"

#include <cmath>

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

double Repeatability::deviation() const {
  double squares = 0;
  std::size_t count = 0;
  for (const Pixel& pixel : pixels_) {
    if (pixel.count != scans_) continue;
    squares += pixel.squares;
    ++count;
  }
  return scans_ < 2 || count == 0 ? 0 : std::sqrt(squares / static_cast<double>(count * (scans_ - 1)));
}

}  // namespace fringix::tool
