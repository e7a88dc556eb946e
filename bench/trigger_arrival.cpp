#include "trigger_arrival.h"

#include <poll.h>
#include <sys/eventfd.h>

#include "machine.h"

namespace fringix::bench {

TriggerArrival::TriggerArrival() : event_(eventfd(0, EFD_CLOEXEC), "eventfd") {}

void TriggerArrival::note() {
  time_ = seconds(CLOCK_MONOTONIC);
  if (eventfd_write(event_.get(), 1) != 0) throwSystemError("eventfd_write");
}

std::optional<double> TriggerArrival::wait(std::chrono::milliseconds limit) {
  pollfd entry{event_.get(), POLLIN, 0};
  if (poll(&entry, 1, static_cast<int>(limit.count())) <= 0) return std::nullopt;
  eventfd_t count = 0;
  if (eventfd_read(event_.get(), &count) != 0) throwSystemError("eventfd_read");
  return time_;
}

}  // namespace fringix::bench
