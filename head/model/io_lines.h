// The head's digital lines, and the outputs that act on the first of them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>

#include "head/settings/range.h"
#include "head/settings/status.h"

namespace fringix::head {

enum class OutputAction : std::int32_t { low = 0, high = 1, toggle = 2 };

// Safe to use from several threads.
class IoLines {
 public:
  static constexpr Range lineRange{0, 7};
  static constexpr Range outputRange{0, 3};  // output n acts on line n
  static constexpr Range actionRange{0, 2};

  Status read(std::int32_t line, std::int32_t& state) const;  // a line that does not exist has the state 0
  Status set(std::int32_t line, std::int32_t state);          // 0 or 1

  Status setOutput(std::int32_t output, std::int32_t action);  // what a later execution does; at first nothing but low
  Status executeOutput(std::int32_t output);

  // Told of each line that goes from 0 to 1, on the thread that sets it. Before there are several.
  void observeRises(std::function<void(std::int32_t line)> observer) { observer_ = std::move(observer); }

 private:
  void tellOfRise(std::int32_t line, std::int32_t before, std::int32_t after) const;

  mutable std::mutex mutex_;
  std::array<std::int32_t, lineRange.high + 1> states_{};
  std::array<OutputAction, outputRange.high + 1> actions_{};
  std::function<void(std::int32_t line)> observer_;
};

}  // namespace fringix::head
