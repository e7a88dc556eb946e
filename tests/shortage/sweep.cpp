#include "sweep.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "shortage.h"

namespace fringix::test {

namespace {

constexpr std::chrono::seconds longestFault{60};
constexpr int mostTries = 3;
constexpr int noFunction = -1;

std::map<std::pair<int, int>, unsigned> tally;

// Ends the process when a fault takes too long: what hangs cannot be ended otherwise.
class Watchdog {
 public:
  explicit Watchdog(std::string what) : what_(std::move(what)), thread_([this] { watch(); }) {}
  ~Watchdog() {
    {
      const std::lock_guard guard(lock_);
      over_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }

 private:
  void watch() {
    std::unique_lock guard(lock_);
    if (changed_.wait_for(guard, longestFault, [&] { return over_; })) return;
    std::printf("hangs: %s\n", what_.c_str());
    std::fflush(stdout);
    std::_Exit(1);
  }

  const std::string what_;
  std::mutex lock_;
  std::condition_variable changed_;
  bool over_ = false;
  std::thread thread_;
};

testing::AssertionResult playOnce(const Scenario& scenario, Fault& fault) {
  std::thread([&] {
    shortage_plan(fault.function, fault.failure, fault.first, fault.lasting ? 1 : 0);
    shortage_watch(1);
    scenario.body();
    shortage_watch(0);
    fault.struck = shortage_end();
  }).join();
  return scenario.check(fault);
}

unsigned play(const Scenario& scenario, Fault fault) {
  auto outcome = testing::AssertionSuccess();
  for (int i = 0; i < mostTries; ++i) {
    outcome = playOnce(scenario, fault);
    if (outcome) return fault.struck;
    std::printf("%s, %s: %s\n", scenario.name.c_str(), text(fault).c_str(), outcome.message());
  }
  ADD_FAILURE() << scenario.name << ", " << text(fault) << ": " << outcome.message();
  return fault.struck;
}

unsigned sweepFailure(const Scenario& scenario, int function, int failure, bool lasting) {
  for (unsigned count = 0;; ++count) {
    if (play(scenario, {function, failure, count * scenario.step, lasting}) == 0) return count;
    ++tally[{function, failure}];
  }
}

// On Windows a thread without memory for its first C++ exception ends in the compiler's runtime, which asks for it again and again.
bool mayLast([[maybe_unused]] int function) {
#ifdef _WIN32
  return shortage_function(function) != std::string("malloc");
#else
  return true;
#endif
}

unsigned sweepFunction(const Scenario& scenario, int function) {
  unsigned total = 0;
  for (const int* failure = shortage_failures(function); *failure != shortage_no_failure; ++failure) {
    const Watchdog watchdog(scenario.name + ", " + shortage_function(function) + ": " + shortage_failure_name(*failure));
    total += sweepFailure(scenario, function, *failure, false);
    if (scenario.lasts && mayLast(function)) total += sweepFailure(scenario, function, *failure, true);
  }
  return total;
}

}  // namespace

bool everyFault() { return std::getenv("FRINGIX_EVERY_FAULT") != nullptr; }

bool Fault::isHarmless() const { return shortage_is_harmless(failure) != 0; }
bool Fault::isOf(const std::string& name) const { return function != noFunction && name == shortage_function(function); }

std::string text(const Fault& fault) {
  if (fault.function == noFunction) return "without a fault";
  return std::string(shortage_function(fault.function)) + ": " + shortage_failure_name(fault.failure) + " at call " +
         std::to_string(fault.first) + (fault.lasting ? " and those behind it" : "");
}

long sweep(const Scenario& scenario) {
  const Fault none{noFunction, shortage_no_failure, 0, false};
  play(scenario, none);  // what is taken once for all
  const long blocks = shortage_blocks();
  play(scenario, none);
  unsigned total = 0;
  for (int function = 0; shortage_function(function) != nullptr; ++function) {
    if (shortage_calls(function) == 0) continue;
    total += sweepFunction(scenario, function);
    play(scenario, none);
  }
  std::printf("%-28s%6u\n", scenario.name.c_str(), total);
  return shortage_blocks() - blocks;
}

void printTally() {
  unsigned total = 0;
  for (const auto& [kind, count] : tally) {
    std::printf("%-16s%-16s%7u\n", shortage_function(kind.first), shortage_failure_name(kind.second), count);
    total += count;
  }
  std::printf("%u faults\n", total);
}

}  // namespace fringix::test
