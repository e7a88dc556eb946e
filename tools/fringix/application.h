// The program as a function, so that it can be run inside another one.
#pragma once

namespace fringix::tool {

// Runs the command line and gives the exit code: 0 success, 1 failure, 2 wrong usage. Results go to standard output; failures and
// progress to standard error.
int run(int argc, const char* const* argv);

}  // namespace fringix::tool
