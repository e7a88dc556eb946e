// What the threads of a soak do, one thing after the other: it follows from the seed and the number of the thread, and from nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace fringix::test {

enum class Action {
  call,     // to a session's head
  local,    // what the library answers by itself, and handlers that come and go
  renew,    // a session by one with the same head
  end,      // a session; those who still call it are told so
  unknown,  // a call with a handle that was never given
  search    // for heads
};

struct Choice {
  Action action;
  std::size_t slot;   // whose session
  std::size_t which;  // of many calls

  bool operator==(const Choice&) const = default;
};

class Choices {
 public:
  Choices(std::uint64_t seed, std::size_t thread, std::size_t slots);
  Choice next();

 private:
  Action drawAction();

  std::mt19937_64 random_;
  const std::size_t slots_;
  const bool searches_;  // one thread does: others may not read the list meanwhile
};

}  // namespace fringix::test
