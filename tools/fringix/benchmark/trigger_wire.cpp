#include "benchmark/trigger_wire.h"

#include <thread>

namespace fringix::tool {
namespace {

// Whoever raises a trigger when the line falls, too, has done so by then.
constexpr std::chrono::milliseconds rest{20};

}  // namespace

TriggerWire::TriggerWire(const Device& head, std::int32_t line)
    : head_(head), line_(line), before_(head.gpio(line)), subscription_(head, [this](std::int32_t event, std::int64_t) { hear(event); }) {
  head_.setGpio(line_, 0);
}

TriggerWire::~TriggerWire() {
  subscription_.reset();
  try {
    head_.setGpio(line_, before_);
  } catch (const Error&) {  // the connection is lost, and with it the wish
  }
}

std::optional<TriggerWire::Clock::duration> TriggerWire::pull(std::chrono::milliseconds limit) {
  std::this_thread::sleep_for(rest);
  {
    const std::lock_guard lock(mutex_);
    heard_.reset();
  }
  const Clock::time_point start = Clock::now();
  head_.setGpio(line_, 1);
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, limit, [this] { return heard_.has_value(); });
  const std::optional<Clock::time_point> heard = heard_;
  lock.unlock();
  head_.setGpio(line_, 0);
  return heard ? std::optional(*heard - start) : std::nullopt;
}

void TriggerWire::hear(std::int32_t event) {
  const Clock::time_point now = Clock::now();
  if (event != SLEVENT_TRIGGER) return;
  const std::lock_guard lock(mutex_);
  if (heard_) return;
  heard_ = now;
  changed_.notify_one();
}

}  // namespace fringix::tool
