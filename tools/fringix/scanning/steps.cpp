#include "scanning/steps.h"

#include <cstdio>

#include "console/explain.h"

namespace fringix::tool {

Steps::Steps(bool visible, std::size_t parts) : line_(stderr, visible), parts_(parts) {}

void Steps::begin(const std::string& name) {
  end();
  requireWanted();
  times_.push_back({name});
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
  if (running_) times_.back().time = Clock::now() - started_;
  running_ = false;
}

void Steps::draw() { line_.show(progressText(done_, parts_, {}) + "  " + times_.back().name); }

void Steps::requireWanted() const {
  if (interruption_.waitFor(std::chrono::seconds(0))) throw Failure({"the scan was ended before it was done", ""});
}

}  // namespace fringix::tool
