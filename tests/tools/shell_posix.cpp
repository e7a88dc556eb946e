#include <sys/wait.h>

#include <cstdlib>

#include "program.h"
#include "shell.h"

namespace fringix::test {

int runShell(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int runWithFiles(const std::string& command, const std::filesystem::path& input, const std::filesystem::path& output,
                 const std::filesystem::path& errors) {
  return runShell(command + (input.empty() ? "" : " < " + inQuotes(input)) + " > " + inQuotes(output) + " 2> " + inQuotes(errors));
}

}  // namespace fringix::test
