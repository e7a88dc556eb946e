// The light on a camera's sensor, before it is read out.
#pragma once

#include <cstdint>
#include <vector>

#include "head/settings/head_settings.h"

namespace fringix::head {

// In 128ths of a grey level, by rows. There is room for twice what a picture shows: what is too bright stays so under its noise.
struct ExposedImage {
  static constexpr int fractions = 128;

  Size size;
  std::vector<std::uint16_t> pixels;
};

}  // namespace fringix::head
