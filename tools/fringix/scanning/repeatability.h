// How much points differ when a scan is repeated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fringix::tool {

class Repeatability {
 public:
  // The points of a scan, x, y, z of each pixel; no numbers where there is none. All scans have as many pixels.
  void add(std::span<const float> points);

  std::size_t scans() const { return scans_; }

  // The standard deviation of a pixel's distance from the camera, in the unit of the points: the root of the mean variance of all pixels
  // that had a point in each scan, which few scans do not make smaller. 0 with fewer than two scans.
  double deviation() const;

 private:
  struct Pixel {
    std::uint32_t count = 0;
    double mean = 0;
    double squares = 0;  // of the deviations from the mean
  };

  std::size_t scans_ = 0;
  std::vector<Pixel> pixels_;
};

}  // namespace fringix::tool
