// The data block that tells how a head's cameras and projector see.
#pragma once

#include "head/model/data_store.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

inline constexpr const char* calibrationBlockName = "calibration.json";

Block calibrationBlock(const HeadSettings& settings);  // dated today

}  // namespace fringix::head
