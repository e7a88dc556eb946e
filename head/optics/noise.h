// Sensor noise, the same for the same seed.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/picture.h"

namespace fringix::head {

class Noise {
 public:
  Noise(std::uint64_t seed, double deviation);  // standard deviation in grey levels; 0 for none

  // Gives `picture` with the noise of picture number `number`; no pixel becomes 0.
  void addTo(const Picture& picture, std::uint64_t number, Picture& noisy) const;

 private:
  std::uint64_t seed_;
  std::vector<std::int8_t> samples_;  // used over and over, from another place in each row; empty for no noise
};

}  // namespace fringix::head
