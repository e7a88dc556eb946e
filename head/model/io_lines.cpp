#include "head/model/io_lines.h"

namespace fringix::head {

namespace {

constexpr Range stateRange{0, 1};

std::size_t indexOf(std::int32_t number) { return static_cast<std::size_t>(number); }

}  // namespace

Status IoLines::read(std::int32_t line, std::int32_t& state) const {
  state = 0;
  if (!lineRange.contains(line)) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  state = states_[indexOf(line)];
  return Status::ok;
}

Status IoLines::set(std::int32_t line, std::int32_t state) {
  if (!lineRange.contains(line) || !stateRange.contains(state)) return Status::badParameter;
  const std::int32_t before = [&] {
    const std::lock_guard lock(mutex_);
    return std::exchange(states_[indexOf(line)], state);
  }();
  tellOfRise(line, before, state);
  return Status::ok;
}

Status IoLines::setOutput(std::int32_t output, std::int32_t action) {
  if (!outputRange.contains(output) || !actionRange.contains(action)) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  actions_[indexOf(output)] = OutputAction{action};
  return Status::ok;
}

Status IoLines::executeOutput(std::int32_t output) {
  if (!outputRange.contains(output)) return Status::badParameter;
  const auto [before, after] = [&] {
    const std::lock_guard lock(mutex_);
    std::int32_t& state = states_[indexOf(output)];
    const OutputAction action = actions_[indexOf(output)];
    const std::int32_t next = action == OutputAction::toggle ? 1 - state : static_cast<std::int32_t>(action);
    return std::pair(std::exchange(state, next), next);
  }();
  tellOfRise(output, before, after);
  return Status::ok;
}

void IoLines::tellOfRise(std::int32_t line, std::int32_t before, std::int32_t after) const {
  if (before == 0 && after == 1 && observer_) observer_(line);
}

}  // namespace fringix::head
