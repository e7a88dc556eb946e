#include "machine.h"

#include <sched.h>
#include <sys/utsname.h>

#include <cstdlib>
#include <fstream>

#include "descriptor.h"

namespace fringix::bench {

namespace {

cpu_set_t affinity() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) != 0) throwSystemError("sched_getaffinity");
  return set;
}

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "unknown";
}

std::string kernelRelease() {
  utsname name{};
  return uname(&name) == 0 ? std::string(name.sysname) + ' ' + name.release + ' ' + name.machine : "unknown";
}

}  // namespace

MachineFacts machineFacts() {
  double load = 0;
  getloadavg(&load, 1);
  return {processorName(), kernelRelease(), allowedCores().size(), load};
}

std::vector<std::size_t> allowedCores() {
  const cpu_set_t set = affinity();
  std::vector<std::size_t> cores;
  for (std::size_t core = 0; core < CPU_SETSIZE; ++core)
    if (CPU_ISSET(core, &set)) cores.push_back(core);
  return cores;
}

void pinTo(std::size_t core) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(core, &set);
  if (sched_setaffinity(0, sizeof set, &set) != 0) throwSystemError("sched_setaffinity");
}

void runAtIdlePriority() {
  const sched_param lowest{};
  if (sched_setscheduler(0, SCHED_IDLE, &lowest) != 0) throwSystemError("sched_setscheduler");
}

double seconds(clockid_t clock) {
  timespec now{};
  if (clock_gettime(clock, &now) != 0) throwSystemError("clock_gettime");
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace fringix::bench
