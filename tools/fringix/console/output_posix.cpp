#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "console/output.h"

namespace fringix::tool {

void prepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    [[maybe_unused]] const int lowest = open("/dev/null", O_RDONLY | O_CLOEXEC);  // it takes this place, and no output
  }
}

}  // namespace fringix::tool
