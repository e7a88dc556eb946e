// The other end of the wire: a process of its own that knows just the commands of the comparisons and answers from prepared
// memory, so that it is never what a comparison waits for. Every connection gets a thread and the same answers.
#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>

#include "child_process.h"
#include "descriptor.h"
#include "head.h"

namespace fringix::bench {

class ReplayServer {
 public:
  // Listens when the constructor returns. `bytesPerSecond`: what it sends on each connection, at most; 0: as much as it can.
  ReplayServer(const Head& head, std::size_t core, std::uint32_t bytesPerSecond = 0);

  clockid_t cpuClock() const noexcept { return cpuClock_; }  // processor time of the whole process

 private:
  Descriptor listener_;
  ChildProcess process_;
  clockid_t cpuClock_{};
};

}  // namespace fringix::bench
