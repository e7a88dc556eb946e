// Ctrl-C as a wish instead of an end.
#pragma once

#include <chrono>

namespace fringix::tool {

// While it lives, the first Ctrl-C is noted; a second one ends the program as if there were no object. One that is made while another one
// lives shares the wish.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  bool waitFor(std::chrono::duration<double> time) const;  // true as soon as Ctrl-C was noted, false when the time is over
};

}  // namespace fringix::tool
