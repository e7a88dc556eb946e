#include <cstdlib>

#include "shell.h"

namespace fringix::test {

// The interpreter strips one pair of quotes around the whole line before it reads it.
int runShell(const std::string& command) { return std::system(("\"" + command + "\"").c_str()); }

}  // namespace fringix::test
