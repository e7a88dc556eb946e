// The protocol as a table: one row per command with the call, the exact bytes that go out, the reply, and what the call makes of it.
// The tests in command_test.cpp hold for every row.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

enum class StatusWord { none, follows };  // `follows`: a status word ends the reply, and a bad one gives SLSYSTEM_ERROR

// One turn of a conversation: what the client sends, and what the head answers to it.
struct Turn {
  Bytes sent;
  Bytes reply;
};

struct CommandCase {
  std::string name;
  std::function<int(OpenSession& session, std::uint8_t* output)> call;  // `output` is 8-byte aligned, filled with guard bytes
  Turn before = {};                                                     // a turn that comes first, for the few commands that need one
  Bytes sent;
  Bytes reply = {};    // without the status word
  Bytes written = {};  // what the call leaves at `output`; everything behind stays as it was
  StatusWord statusWord = StatusWord::none;
  int minimumVersion = 0;     // 0: the command asks for no version
  Bytes writtenOnBreak = {};  // what a broken connection leaves at `output` where the reply had not begun to arrive there
  int whenVersionFails = SLVERSION_TOO_OLD;
  int withoutConnection = SLSYSTEM_ERROR;
};

std::ostream& operator<<(std::ostream& out, const CommandCase& row);

// The rows, by family.
std::vector<CommandCase> sessionCommands();
std::vector<CommandCase> sequenceCommands();
std::vector<CommandCase> projectionCommands();
std::vector<CommandCase> pictureCommands();
std::vector<CommandCase> settingsCommands();
std::vector<CommandCase> dataCommands();

inline std::int32_t* asInteger(std::uint8_t* output) { return reinterpret_cast<std::int32_t*>(output); }
inline std::uint32_t* asUnsigned(std::uint8_t* output) { return reinterpret_cast<std::uint32_t*>(output); }
inline const std::uint8_t* asPixels(const Bytes& bytes) { return reinterpret_cast<const std::uint8_t*>(bytes.data()); }

}  // namespace fringix::test
