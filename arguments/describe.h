// What is made of a program's tables besides its help: a manual page and completion for shells.
#pragma once

#include <string>

#include "arguments/command.h"

namespace fringix::arguments {

std::string manualPage(const Command& program);
std::string bashCompletion(const Command& program);
std::string zshCompletion(const Command& program);
std::string fishCompletion(const Command& program);

// "program --describe-as man", or bash, zsh, fish: how the build asks a program for them. True: it was asked and has printed it. Throws
// UsageError for anything else.
bool describe(const Command& program, int argc, const char* const* argv);

}  // namespace fringix::arguments
