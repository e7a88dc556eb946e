// What the projector shows: at first white light.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "head/pattern.h"

namespace fringix::head {

class Projector {
 public:
  explicit Projector(Size size) : size_(size) {}

  // A pattern smaller than the projector stands in its top left corner, in black surroundings; null is white light.
  void show(std::shared_ptr<const Pattern> pattern);

  // The light of each pixel by rows, and after the last one a 0, for what no pixel lights. A colour counts as its mean.
  const std::vector<std::uint8_t>& light();

 private:
  void computeLight();

  Size size_;
  std::shared_ptr<const Pattern> shown_;
  std::vector<std::uint8_t> light_;  // empty until asked for
};

}  // namespace fringix::head
