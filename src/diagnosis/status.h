// The status codes, inside the library, and their names.
#pragma once

#include <cstdint>

#include "fringix/fringix.h"

namespace fringix {

const char* statusName(std::int32_t code) noexcept;

}  // namespace fringix
