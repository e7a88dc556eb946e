#include "support/process_state.h"

#include <malloc.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace fringix::test {

namespace {

std::size_t countEntries(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

std::chrono::microseconds processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::microseconds(time.tv_sec * 1'000'000 + time.tv_nsec / 1000);
}

std::size_t threadCount() { return countEntries("/proc/self/task"); }

std::size_t descriptorCount() { return countEntries("/proc/self/fd"); }

std::size_t residentBytes() {
  std::size_t all = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t heapBytes() {
  const struct mallinfo2 all = mallinfo2();
  return all.uordblks + all.hblkhd;
}

}  // namespace fringix::test
