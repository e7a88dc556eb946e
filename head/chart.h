// The test chart that the camera sees.
#pragma once

#include "head/picture.h"

namespace fringix::head {

// A grey ramp, a checkerboard and a ring inside a white frame.
Picture makeChart(Size size);

}  // namespace fringix::head
