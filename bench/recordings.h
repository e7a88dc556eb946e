// What "fringix record" costs on the way between a client and a head.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "comparisons.h"
#include "head.h"
#include "measurement.h"

namespace fringix::bench {

struct RecordingComparison {
  std::string name;
  Head head;
  Cores cores;
  std::uint32_t bytesPerSecond;  // of the link to the head; 0: as many as it can
  std::vector<Quantity> quantities;
};

const std::vector<RecordingComparison>& recordingComparisons();

// One client whose connection is recorded, in place of the library, and one whose is not. Throws when the recording ends early.
Measurement measure(const RecordingComparison& comparison, const Plan& plan);

}  // namespace fringix::bench
