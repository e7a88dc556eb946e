// The protocol as a table: one row per command with the call, the exact bytes that go out, the reply, and what the call makes of it.
// The tests in command_test.cpp hold for every row.
#pragma once

#include <cstddef>
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

// What a connection that breaks leaves at the output after so many bytes of the replies, that of the turn before among them.
using Remains = std::function<Bytes(std::size_t arrived)>;

struct CommandCase {
  std::string name;
  std::function<int(OpenSession& session, std::uint8_t* output)> call;  // `output` is 8-byte aligned, filled with guard bytes
  Turn before = {};                                                     // a turn that comes first, for the few commands that need one
  Bytes sent;
  Bytes reply = {};    // without the status word
  Bytes written = {};  // what the call leaves at `output`; everything behind stays as it was
  StatusWord statusWord = StatusWord::none;
  int minimumVersion = 0;     // 0: the command asks for no version
  Remains leftByBreak = {};   // unless given: nothing before all of the reply has arrived, and `written` from then on
  Bytes writtenOffline = {};  // what the call leaves at `output` without a connection
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

// Bytes that go straight into the caller's buffer.
inline Remains asItArrives(const Bytes& reply) {
  return [reply](std::size_t arrived) { return reply.substr(0, arrived); };
}

// An integer that is stored once so much has arrived, and is 0 before.
inline Remains zeroUntil(std::size_t enough, const Bytes& number) {
  return [enough, number](std::size_t arrived) { return arrived < enough ? integer(0) : number; };
}

// Nothing, however much of the reply has arrived.
inline Bytes untouched(std::size_t) { return {}; }

inline std::int32_t* asInteger(std::uint8_t* output) { return reinterpret_cast<std::int32_t*>(output); }
inline std::uint32_t* asUnsigned(std::uint8_t* output) { return reinterpret_cast<std::uint32_t*>(output); }
inline const std::uint8_t* asPixels(const Bytes& bytes) { return reinterpret_cast<const std::uint8_t*>(bytes.data()); }

}  // namespace fringix::test
