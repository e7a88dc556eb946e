// Lengths of time from the command line.
#pragma once

#include <chrono>
#include <string>

namespace fringix::arguments {

// What "1s", "500ms", "2min" or "0.5", which are seconds, mean. Throws UsageError, which tells the limits.
std::chrono::milliseconds toDuration(const std::string& text);

}  // namespace fringix::arguments
