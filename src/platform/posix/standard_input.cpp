#include "platform/standard_input.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace fringix::platform {

namespace {

// With this signal blocked, a read from the terminal of another program fails instead of stopping the process.
class BackgroundReads {
 public:
  BackgroundReads() noexcept {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTTIN);
    pthread_sigmask(SIG_BLOCK, &set, &before_);
  }
  ~BackgroundReads() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  BackgroundReads(const BackgroundReads&) = delete;
  BackgroundReads& operator=(const BackgroundReads&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

StandardInput::StandardInput() noexcept : native_(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {}

StandardInput::~StandardInput() {
  if (native_ >= 0) close(static_cast<int>(native_));
}

std::size_t StandardInput::read(char* buffer, std::size_t size) noexcept {
  const BackgroundReads failing;
  ssize_t count = -1;
  do count = ::read(static_cast<int>(native_), buffer, size);
  while (count < 0 && errno == EINTR);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace fringix::platform
