// Command lines, read as a program's tables say.
#pragma once

#include "arguments/command.h"

namespace fringix::arguments {

// Stores what the command line gives and then runs the command that it names. Throws UsageError when something is wrong with it, before
// anything is run, and passes on what the command throws. False: only help, the version or another description was asked for, and has been
// printed.
bool parse(const Command& program, int argc, const char* const* argv);

}  // namespace fringix::arguments
