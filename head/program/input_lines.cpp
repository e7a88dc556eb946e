#include "head/program/input_lines.h"

#include <array>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "aside/run_aside.h"
#include "platform/standard_input.h"

namespace fringix::head {

namespace {

constexpr std::size_t longestLine = 4096;  // room for the name of a file; of longer lines the beginning will do

}  // namespace

// Holds the line that waits to be taken; the reading thread does not read ahead.
struct InputLines::Slot {
  platform::StandardInput input;
  std::mutex mutex;
  std::condition_variable changed;
  std::optional<std::string> line;

  void put(std::string text) {
    std::unique_lock lock(mutex);
    // With a limit: the wait without one is in the C++ runtime of the newest systems only.
    while (line) changed.wait_for(lock, std::chrono::hours(1));
    line = std::move(text);
    changed.notify_all();
  }

  std::optional<std::string> take(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, limit, [&] { return line.has_value(); });
    changed.notify_all();
    return std::exchange(line, std::nullopt);
  }

  void readToTheEnd() {
    std::string text;
    std::array<char, 512> buffer;
    while (const std::size_t count = input.read(buffer.data(), buffer.size())) {
      for (std::size_t i = 0; i < count; ++i) {
        if (buffer[i] == '\n')
          put(std::exchange(text, {}));
        else if (buffer[i] != '\r' && text.size() < longestLine)
          text.push_back(buffer[i]);
      }
    }
    if (!text.empty()) put(text);
  }
};

// Aside, because nothing ends a read that waits for a person.
InputLines::InputLines() : slot_(std::make_shared<Slot>()) {
  runAside([slot = slot_] { slot->readToTheEnd(); });
}

std::optional<std::string> InputLines::next(std::chrono::milliseconds limit) { return slot_->take(limit); }

}  // namespace fringix::head
