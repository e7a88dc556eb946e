// The read-out of a sensor, with its noise: the same for the same seed.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/exposed_image.h"
#include "head/optics/picture.h"

namespace fringix::head {

// In grey levels, of the picture as it is read out.
struct NoiseKind {
  double deviation = 0;  // of every pixel
  double shot = 0;       // the variance that each grey level adds
  bool operator==(const NoiseKind&) const = default;
};

class Noise {
 public:
  explicit Noise(std::uint64_t seed);

  // Gives picture number `number`: the light with its noise, rounded to whole grey levels; no pixel is 0.
  void readOut(const ExposedImage& image, const NoiseKind& kind, std::uint64_t number, Picture& picture);

 private:
  std::uint64_t seed_;
  std::vector<std::int16_t>
      samples_;  // of deviation 1, used over and over, from another place in each row; made for the first picture that needs them
};

}  // namespace fringix::head
