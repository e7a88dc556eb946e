// Plays examples with a head, and tells where it says something else.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "protocol/conversations.h"
#include "protocol/encoding.h"

namespace fringix::protocol {

// The client's end of a connection. Both throw when it cannot go on.
class Connection {
 public:
  virtual ~Connection() = default;
  virtual void send(const Bytes& bytes) = 0;
  virtual Bytes receive(std::size_t count) = 0;
};

struct Difference {
  std::string command;
  std::string field;
  std::size_t offset;  // of its first byte in what the head answers to the command
  std::string expected;
  std::string found;
};

struct Played {
  std::vector<Difference> differences;
  bool inStep = true;  // else nobody knows what the head would answer to: the connection is of no further use
};

// The connection's facts are taken and extended. `strict`: what any head may say differently has to be as the example has it where a
// status or a missing picture is concerned.
Played play(const CommandTable& table, const Example& example, Connection& connection, Facts& facts, bool strict);

}  // namespace fringix::protocol
