// Whether somebody watches.
#pragma once

#include <cstdio>

namespace fringix::tool {

bool isTerminal(std::FILE* stream);  // false for pipes and files

}  // namespace fringix::tool
