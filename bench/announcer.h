// Heads that are searched for: a process that answers every request, in whatever network, with one datagram for each head.
#pragma once

#include <time.h>

#include "child_process.h"
#include "descriptor.h"

namespace fringix::bench {

class Announcer {
 public:
  explicit Announcer(int heads);  // listens when the constructor returns

  clockid_t cpuClock() const noexcept { return cpuClock_; }  // processor time of the whole process

 private:
  Descriptor socket_;
  ChildProcess process_;
  clockid_t cpuClock_{};
};

}  // namespace fringix::bench
