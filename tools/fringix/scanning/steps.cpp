#include "scanning/steps.h"

#include <algorithm>
#include <cstdio>

#include "console/explain.h"
#include "console/output.h"

namespace fringix::tool {

Steps::Steps(bool visible) : line_(stderr, visible) {}

void Steps::expect(std::size_t parts) { parts_ = parts; }

void Steps::begin(const std::string& name) {
  end();
  requireWanted();
  const auto known = std::find_if(times_.begin(), times_.end(), [&](const StepTime& step) { return step.name == name; });
  current_ = static_cast<std::size_t>(known - times_.begin());
  if (known == times_.end()) times_.push_back({name});
  started_ = Clock::now();
  running_ = true;
  draw();
}

void Steps::advance() {
  ++done_;
  draw();
  requireWanted();
}

void Steps::end() {
  if (running_) times_[current_].time += Clock::now() - started_;
  running_ = false;
}

void Steps::caution(const std::string& text) {
  line_.show("");
  tell("fringix: caution: " + text);
  draw();
}

void Steps::draw() {
  if (running_) line_.show(progressText(done_, parts_, {}) + "  " + times_[current_].name);
}

void Steps::requireWanted() const {
  if (interruption_.waitFor(std::chrono::seconds(0))) throw Failure({"the scan was ended before it was done", ""});
}

}  // namespace fringix::tool
