// Lengths of time on the command line.
#pragma once

#include <string>

namespace fringix::tool {

// Seconds of "1s", "500ms", "2min" or "0.5". Throws arguments::UsageError for other texts.
double parseSeconds(const std::string& text);

}  // namespace fringix::tool
