// A calibration as a text; docs/calibration.md describes the format.
#pragma once

#include <string>
#include <string_view>

#include "calibration.h"

namespace fringix::scan {

Calibration calibrationFrom(std::string_view text);  // checked; throws a Failure with what is wrong and where
std::string textOf(const Calibration& calibration);

}  // namespace fringix::scan
