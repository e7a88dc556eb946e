// What differs between the command interpreters behind std::system.
#pragma once

#include <string>

namespace fringix::test {

// Runs a command line with double-quoted words and redirections; gives its exit code, or -1 when it did not end by itself.
int runShell(const std::string& command);

}  // namespace fringix::test
