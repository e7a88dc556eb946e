// A recording as people and programs read it: a line for each command, and for what lies between them.
#pragma once

#include <string>

namespace fringix::tool {

// Prints it. Throws Failure where the file is damaged, after what stands before that; what is merely missing at its end is told on standard
// error.
void showRecording(const std::string& file, bool json);

}  // namespace fringix::tool
