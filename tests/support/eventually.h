// Waits for something that another thread or process brings about.
#pragma once

#include <chrono>
#include <thread>

namespace fringix::test {

// Whether `condition` holds within the limit, which is far longer than it should take.
template <class Condition>
bool eventually(Condition&& condition, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace fringix::test
