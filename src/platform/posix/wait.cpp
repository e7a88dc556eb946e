#include "platform/posix/wait.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace fringix::platform {

namespace {

using Clock = std::chrono::steady_clock;

// What one poll can hold; the loop goes on from there.
int pollLimit(std::chrono::milliseconds limit) noexcept { return static_cast<int>(std::clamp<std::int64_t>(limit.count(), 0, INT_MAX)); }

}  // namespace

Readiness waitFor(int descriptor, short events, std::chrono::milliseconds limit) noexcept {
  if (descriptor < 0) return Readiness::failed;  // poll would pass over it and wait in vain
  pollfd entry{descriptor, events, 0};
  const short failures = static_cast<short>(events == POLLOUT ? POLLNVAL | POLLERR : POLLNVAL);
  const bool forever = limit < std::chrono::milliseconds::zero();
  const auto deadline = Clock::now() + (forever ? std::chrono::milliseconds::zero() : limit);
  for (int milliseconds = forever ? -1 : pollLimit(limit);;) {
    const int ready = poll(&entry, 1, milliseconds);
    if (ready > 0) return (entry.revents & failures) != 0 ? Readiness::failed : Readiness::ready;
    if (ready == 0 && milliseconds != INT_MAX) return Readiness::timedOut;
    if (ready < 0 && errno != EINTR) return Readiness::failed;
    // Rounded up, so that a wait never ends before its limit.
    if (!forever) milliseconds = pollLimit(std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
  }
}

}  // namespace fringix::platform
