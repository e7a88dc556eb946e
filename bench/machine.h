// The machine the benchmark runs on: its cores, its clocks, and what a reader of the numbers must know of it.
#pragma once

#include <time.h>

#include <cstddef>
#include <string>
#include <vector>

namespace fringix::bench {

struct MachineFacts {
  std::string processor;
  std::string kernel;
  std::size_t cores;  // that this process may use
  double load;        // runnable processes, mean of the last minute
};

MachineFacts machineFacts();

std::vector<std::size_t> allowedCores();
void pinTo(std::size_t core);  // the calling thread and all it starts later

void runAtIdlePriority();  // the calling thread: only when nobody else wants the core

double seconds(clockid_t clock);

}  // namespace fringix::bench
