// The other end of the wire: a process of its own that knows just the commands of the comparisons and answers from prepared
// memory, so that it is never what a comparison waits for. Every connection gets a thread and the same answers.
#pragma once

#include <time.h>

#include <cstddef>

#include "child_process.h"
#include "descriptor.h"
#include "head.h"

namespace fringix::bench {

class ReplayServer {
 public:
  ReplayServer(const Head& head, std::size_t core);  // listens when the constructor returns

  clockid_t cpuClock() const noexcept { return cpuClock_; }  // processor time of the whole process

 private:
  Descriptor listener_;
  ChildProcess process_;
  clockid_t cpuClock_{};
};

}  // namespace fringix::bench
