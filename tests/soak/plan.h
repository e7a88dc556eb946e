// What a soak is: how long, with how much of everything, and the seed from which every thread's choices follow.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace fringix::test {

struct SoakPlan {
  std::chrono::milliseconds duration{};
  std::uint64_t seed = 1;
  std::size_t heads = 16;
  std::size_t threads = 8;
  std::size_t slots = 24;  // sessions that are open at once
  double rate = 50;        // operations a second of each thread
  double triggers = 200;   // a second, of all heads together
  double faults = 0.002;   // of the commands
  std::size_t leak = 0;    // bytes that each operation loses, to show that it is noticed
  std::chrono::seconds linesEvery{10};
};

// No call may take longer: 30 seconds of a silent head, what others wait for that hold the session, and the end of its threads.
inline constexpr std::chrono::seconds longestCall{60};

}  // namespace fringix::test
