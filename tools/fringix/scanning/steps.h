// The steps of a scan: how far they are, for people, and how long each took.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "console/interruption.h"
#include "console/progress_bar.h"

namespace fringix::tool {

struct StepTime {
  std::string name;
  std::chrono::duration<double> time{};
};

// A bar for the whole with the name of the current step. Ctrl-C ends the scan where the next step or its next part would begin, so that
// the head is left in order.
class Steps {
 public:
  explicit Steps(bool visible);

  void expect(std::size_t parts);  // so many in all

  void begin(const std::string& name);  // ends the step before; one that comes again goes on counting; throws Failure after Ctrl-C
  void advance();                       // a part is done; throws Failure after Ctrl-C
  void end();
  void caution(const std::string& text);  // told at once, beside the bar

  const std::vector<StepTime>& times() const { return times_; }

 private:
  using Clock = std::chrono::steady_clock;
  void draw();
  void requireWanted() const;

  Interruption interruption_;
  TransientLine line_;
  std::size_t parts_ = 1;
  std::size_t done_ = 0;
  std::size_t current_ = 0;
  bool running_ = false;
  Clock::time_point started_{};
  std::vector<StepTime> times_;
};

}  // namespace fringix::tool
