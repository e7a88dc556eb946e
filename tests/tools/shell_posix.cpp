#include <sys/wait.h>

#include <cstdlib>

#include "shell.h"

namespace fringix::test {

int runShell(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace fringix::test
