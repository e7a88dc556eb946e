// Whether somebody watches.
#pragma once

#include <cstdio>

namespace fringix::tool {

bool isTerminal(std::FILE* stream);  // false for pipes and files

// Whether it shows colours for the usual sequences, and nobody has asked for none (NO_COLOR).
bool takesColours(std::FILE* stream);

}  // namespace fringix::tool
