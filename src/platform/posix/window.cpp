#include "platform/window.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "platform/posix/silenced_pipe_signal.h"
#include "platform/process_wide.h"

namespace fringix::platform {

namespace {

std::mutex onePostAtATime;

[[maybe_unused]] const bool told = inForkedChildren([] { beginAnew(onePostAtATime); });

int descriptorOf(WindowHandle handle) noexcept { return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)); }

// The host's descriptor may be in blocking mode, which is not ours to change: a pipe that polls as writable takes a record whole, and
// the lock keeps other posts of this process from filling it in between.
void writeToPipe(int descriptor, const PostedRecord& record) noexcept {
  const std::lock_guard guard(onePostAtATime);
  const SilencedPipeSignal silence;
  pollfd entry{descriptor, POLLOUT, 0};
  if (poll(&entry, 1, 0) != 1 || entry.revents != POLLOUT) return;
  [[maybe_unused]] const ssize_t written = write(descriptor, &record, sizeof record);
}

}  // namespace

Window::Window(WindowHandle handle) noexcept : handle_(handle), identity_(identityOf(handle)) {}

// Other files than pipes and sockets have none, nor has null, which is no descriptor here: nothing is ever written to them.
Window::Identity Window::identityOf(WindowHandle handle) noexcept {
  struct stat file;
  if (handle == nullptr || fstat(descriptorOf(handle), &file) != 0 || !(S_ISFIFO(file.st_mode) || S_ISSOCK(file.st_mode))) return {};
  return {file.st_dev, file.st_ino};
}

void Window::post(std::uint32_t message, std::uint64_t event, std::int64_t parameter) const noexcept {
  if (identity_ == Identity{} || identityOf(handle_) != identity_) return;
  const int descriptor = descriptorOf(handle_);
  const PostedRecord record{message, 0, event, parameter};
  if (send(descriptor, &record, sizeof record, MSG_DONTWAIT | MSG_NOSIGNAL) < 0 && errno == ENOTSOCK) writeToPipe(descriptor, record);
}

}  // namespace fringix::platform
