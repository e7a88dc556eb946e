#include "platform/debug_output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <mutex>
#include <string_view>

#include "platform/posix/silenced_pipe_signal.h"
#include "platform/process_wide.h"

namespace fringix::platform {

namespace {

constexpr int patience = 10;  // milliseconds, for a reader that is behind
constexpr std::string_view lineEnd = "\r\n";

bool takesMore(int descriptor, int milliseconds) noexcept {
  pollfd entry{descriptor, POLLOUT, 0};
  return poll(&entry, 1, milliseconds) == 1 && (entry.revents & POLLOUT) != 0;
}

// Standard error as it is now: the host may point it elsewhere at any time. Its mode is the host's, and a write may wait in it, so pipes
// and terminals are opened once more, in a mode of our own.
class StandardError {
 public:
  StandardError() noexcept {
    struct stat file;
    if (fstat(STDERR_FILENO, &file) != 0) return;
    isSocket_ = S_ISSOCK(file.st_mode);
    mayWait_ = S_ISFIFO(file.st_mode) || S_ISCHR(file.st_mode);
    if (mayWait_) own_ = open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  }
  ~StandardError() {
    if (own_ >= 0) close(own_);
  }
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;

  bool takesMore(int milliseconds) const noexcept { return platform::takesMore(descriptor(), milliseconds); }

  // Whether any of it was written; `text` is cut to what was not.
  bool write(std::string_view& text) const noexcept {
    const ssize_t written = isSocket_ ? send(descriptor(), text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL) : writeToFile(text);
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    return written > 0;
  }

 private:
  int descriptor() const noexcept { return own_ >= 0 ? own_ : STDERR_FILENO; }

  // One that belongs to another user cannot be opened: what polls as writable has room for so much, unless others fill it just then.
  ssize_t writeToFile(std::string_view text) const noexcept {
    const bool asItIs = mayWait_ && own_ < 0;
    if (asItIs && !takesMore(0)) return -1;
    return ::write(descriptor(), text.data(), asItIs ? std::min<std::size_t>(text.size(), PIPE_BUF) : text.size());
  }

  int own_ = -1;
  bool isSocket_ = false;
  bool mayWait_ = false;
};

// What the lines of this process know of each other. One is written at a time.
struct Lines {
  std::mutex oneAtATime;
  bool readerIsBehind = false;  // it gets no patience before it has read on
  bool endIsMissing = false;    // of the last line, which did not fit
};
Lines lines;

[[maybe_unused]] const bool told = inForkedChildren([] { beginAnew(lines); });

bool writeAll(const StandardError& error, std::string_view text) noexcept {
  const std::size_t size = text.size();
  while (!text.empty() && error.takesMore(lines.readerIsBehind ? 0 : patience) && error.write(text)) {
  }
  lines.readerIsBehind = !text.empty();
  if (text.size() < size) lines.endIsMissing = !text.empty();
  return text.empty();
}

}  // namespace

// What standard error does not take is lost: a host that nobody reads must not hang.
void writeDebugOutput(const char* line) noexcept {
  const std::lock_guard guard(lines.oneAtATime);
  const SilencedPipeSignal silence;
  const StandardError error;
  if (lines.endIsMissing && !writeAll(error, lineEnd)) return;
  writeAll(error, line);
}

int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, limit + 1, format, arguments);
  return length > static_cast<int>(limit) ? -1 : length;
}

}  // namespace fringix::platform
