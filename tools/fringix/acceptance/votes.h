// The place that most of many agree on.
#pragma once

#include <span>

#include "scanning/place.h"

namespace fringix::tool {

// The mean of the places in and around that cube of `cell` mm which, with those around it, has the most. There is at least one place, and
// all are finite.
Place mostNamed(std::span<const Place> places, double cell);

}  // namespace fringix::tool
