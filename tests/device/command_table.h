// The protocol as a table: one row per command with the call, the exact bytes that go out, the reply, and what the call makes of it.
// The tests in command_test.cpp hold for every row.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "device/open_session.h"

namespace fringix::test {

enum class StatusWord { none, follows };  // `follows`: a status word ends the reply, and a bad one gives SLSYSTEM_ERROR

struct CommandCase {
  std::string name;
  std::function<int(OpenSession& session, std::uint8_t* output)> call;  // `output` is 4-byte aligned, filled with guard bytes
  Bytes sent;
  Bytes reply = {};    // without the status word
  Bytes written = {};  // what the call leaves at `output`; everything behind stays as it was
  StatusWord statusWord = StatusWord::none;
  int minimumVersion = 0;     // 0: the command asks for no version
  Bytes writtenOnBreak = {};  // what a broken connection leaves at `output` where the reply had not begun to arrive there
};

std::ostream& operator<<(std::ostream& out, const CommandCase& row);

std::vector<CommandCase> commandTable();

}  // namespace fringix::test
