// The light of the projector and of the surroundings, as a camera's sensor gets it.
#pragma once

#include <cstdint>
#include <vector>

#include "head/optics/exposed_image.h"
#include "head/optics/light.h"
#include "head/optics/light_map.h"

namespace fringix::head {

// In grey levels: what a white surface gives back of the full light of the projector is 255 times `projector`.
struct Brightening {
  double projector = 1;
  double surroundings = 0;
};

// Made for one light, which every use needs again: it is too large to keep.
class SensorLight {
 public:
  SensorLight(const LightMap& map, const Light& light, const Brightening& brightening);

  void fill(const Light& light, ExposedImage& image) const;           // every pixel
  std::uint16_t at(const Light& light, const LitPixel& pixel) const;  // one that sees something else than the map says

 private:
  void fillStrip(const Light& light, std::size_t first, std::size_t count, std::uint16_t* row) const;
  std::uint32_t brightness(const Light& light, std::uint32_t column, std::uint32_t row) const;
  std::uint32_t tabled(std::uint32_t code) const;

  const LightMap& map_;
  std::vector<Brightness> profile_;  // of light that is the same along its columns or rows
  float base_;
  float factor_;
};

}  // namespace fringix::head
