// What leaves the projector.
#pragma once

#include <cstdint>
#include <vector>

#include "head/settings/head_settings.h"

namespace fringix::head {

using Brightness = std::uint16_t;  // in 256ths of a level

enum class LightKind { columns, rows, image };  // the same all along each column, all along each row, or neither

struct Light {
  Size size;
  LightKind kind = LightKind::columns;
  std::vector<Brightness> values;  // of each column, row or pixel (by rows)
};

}  // namespace fringix::head
