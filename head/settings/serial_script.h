// What the device at a head's serial port says.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace fringix::head {

struct SerialAnswer {
  std::string command;
  std::string reply;
  bool operator==(const SerialAnswer&) const = default;
};

using SerialScript = std::vector<SerialAnswer>;

// Reads lines "command => reply"; empty lines and those that begin with # do not count. Throws std::runtime_error with the number of a
// line that is neither.
SerialScript parseSerialScript(std::istream& input);

}  // namespace fringix::head
