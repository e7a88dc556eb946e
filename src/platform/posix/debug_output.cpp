#include "platform/debug_output.h"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/posix/silenced_pipe_signal.h"

namespace fringix::platform {

namespace {

constexpr int patience = 10;  // milliseconds, for a reader that is behind

bool takesMore(int descriptor) noexcept {
  pollfd entry{descriptor, POLLOUT, 0};
  return poll(&entry, 1, patience) == 1 && (entry.revents & POLLOUT) != 0;
}

}  // namespace

void writeDebugOutput(const char* line) noexcept {
  // A line that standard error does not take is lost: a host that nobody reads must not hang.
  const SilencedPipeSignal silence;
  if (!takesMore(STDERR_FILENO)) return;
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, std::strlen(line));
}

int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, limit + 1, format, arguments);
  return length > static_cast<int>(limit) ? -1 : length;
}

}  // namespace fringix::platform
