// A benchmark as a picture: how the times of each call are distributed.
#pragma once

#include "benchmark/findings.h"
#include "png/raster.h"

namespace fringix::tool {

// For each call a field with bars, how many took how long, and a line, the share of those that took no longer. In RGB. Calls with
// one sample are left out.
png::Raster drawDistributions(const Findings& findings);

}  // namespace fringix::tool
