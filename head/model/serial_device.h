// The device at the head's serial port.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "head/settings/serial_script.h"

namespace fringix::head {

// Follows a script, or repeats every command when the script is empty. Safe to use from several threads.
class SerialDevice {
 public:
  explicit SerialDevice(const SerialScript& script);

  // Line ends behind the command do not count. Several answers to one command are given in turn, the last of them from then on.
  // Empty when the device has no answer.
  std::string answer(std::string_view command);

 private:
  struct Answers {
    std::vector<std::string> replies;
    std::size_t next = 0;
  };

  std::mutex mutex_;
  std::map<std::string, Answers, std::less<>> script_;
};

}  // namespace fringix::head
