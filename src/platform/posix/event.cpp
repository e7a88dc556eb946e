#include "platform/event.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/own_descriptors.h"
#include "platform/posix/wait.h"

namespace fringix::platform {

ManualResetEvent::ManualResetEvent() : native_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (native_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  own(static_cast<int>(native_));
}

ManualResetEvent::~ManualResetEvent() { closeOwn(static_cast<int>(native_)); }

void ManualResetEvent::set() noexcept {
  // A full counter refuses the write and is as readable as before: the event stays set.
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(static_cast<int>(native_), &one, sizeof one);
}

void ManualResetEvent::reset() noexcept {
  std::uint64_t count;
  [[maybe_unused]] const ssize_t taken = read(static_cast<int>(native_), &count, sizeof count);
}

bool ManualResetEvent::wait(std::chrono::milliseconds limit) const noexcept {
  return waitFor(static_cast<int>(native_), POLLIN, limit) == Readiness::ready;
}

}  // namespace fringix::platform
