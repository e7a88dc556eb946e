// How a recording ends, and what is wrong with it, as people are told.
#pragma once

#include <fmt/format.h>

#include "console/explain.h"
#include "console/output.h"
#include "recording/reader.h"

namespace fringix::tool {

inline Failure asFailure(const recording::BadRecording& error) {
  return Failure({error.what(), "\"fringix recording show FILE\" shows what stands before that, and \"fringix recording cut\" saves it.",
                  "bad-recording"});
}

inline void tellEnd(const recording::Reader& file) {
  if (file.leftOver() > 0) {
    tell(fmt::format("fringix: caution: {} bytes at the end are a record that was not written whole; they are ignored", file.leftOver()));
  } else if (!file.endedInOrder()) {
    tell("fringix: caution: the recording did not end in order; what happened last may be missing");
  }
}

}  // namespace fringix::tool
