// The other end of the wire: a process of its own that knows just the commands of the comparisons and answers from prepared
// memory, so that it is never what a comparison waits for. Every connection gets a thread and the same answers.
#pragma once

#include <sys/types.h>
#include <time.h>

#include "head.h"

namespace fringix::bench {

class ReplayServer {
 public:
  ReplayServer(const Head& head, std::size_t core);  // listens when the constructor returns
  ~ReplayServer();                                   // ends the process
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  clockid_t cpuClock() const noexcept { return cpuClock_; }  // processor time of the whole process

 private:
  pid_t process_ = -1;
  clockid_t cpuClock_{};
};

}  // namespace fringix::bench
