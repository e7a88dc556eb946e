// Lines of standard input, one at a time, read beside the program's work.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace fringix::head {

class InputLines {
 public:
  InputLines();

  // The next line without its end, as soon as there is one; nothing when `limit` is over.
  std::optional<std::string> next(std::chrono::milliseconds limit);

 private:
  struct Slot;

  std::shared_ptr<Slot> slot_;  // shared with the reading thread, which ends with the input or with the process
};

}  // namespace fringix::head
