// Keeps cores from halting while a comparison waits.
#pragma once

#include <cstddef>

#include "child_process.h"

namespace fringix::bench {

// Runs in what time nobody else wants of the core. Where a halted core is slow to wake, above all in a virtual machine, a client
// that has once emptied its queue would sleep and be woken for every piece that follows: the same client then costs half as much
// again, by chance.
class Wakefulness {
 public:
  explicit Wakefulness(std::size_t core);

 private:
  ChildProcess spinner_;
};

}  // namespace fringix::bench
