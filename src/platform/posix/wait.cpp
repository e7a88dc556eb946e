#include "platform/posix/wait.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace fringix::platform {

namespace {

using Clock = std::chrono::steady_clock;

// Rounded up, so that a wait never ends before its limit; cut to what one poll can hold, the loop goes on from there.
int remainingMilliseconds(Clock::time_point deadline) noexcept {
  const auto remaining = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(remaining, 0, INT_MAX));
}

}  // namespace

Readiness waitFor(int descriptor, short events, std::chrono::milliseconds limit) noexcept {
  if (descriptor < 0) return Readiness::failed;  // poll would pass over it and wait in vain
  pollfd entry{descriptor, events, 0};
  const short failures = static_cast<short>(events == POLLOUT ? POLLNVAL | POLLERR : POLLNVAL);
  const bool forever = limit < std::chrono::milliseconds::zero();
  const auto deadline = Clock::now() + (forever ? std::chrono::milliseconds::zero() : limit);
  for (;;) {
    const int milliseconds = forever ? -1 : remainingMilliseconds(deadline);
    const int ready = poll(&entry, 1, milliseconds);
    if (ready > 0) return (entry.revents & failures) != 0 ? Readiness::failed : Readiness::ready;
    if (ready == 0 && milliseconds != INT_MAX) return Readiness::timedOut;
    if (ready < 0 && errno != EINTR) return Readiness::failed;
  }
}

}  // namespace fringix::platform
