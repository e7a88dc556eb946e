// The commands that a head understands: one row each, found by name.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "head/head_model.h"
#include "head/picture.h"
#include "head/status.h"
#include "head/wire.h"

namespace fringix::head {

// What a command works with: the head, the client's connection (the name has been read, the arguments have not), room for pictures.
struct Call {
  HeadModel& model;
  Wire& wire;
  Picture picture{};
  Picture part{};

  void reply(Status status) { wire.writeInt(static_cast<std::int32_t>(status)); }
};

struct Command {
  std::string_view name;
  std::int32_t since;  // the protocol version that brought it; 0 for those that every head knows
  void (*run)(Call& call);
};

// The families.
std::span<const Command> identityCommands();
std::span<const Command> pictureCommands();
std::span<const Command> sequenceCommands();
std::span<const Command> projectionCommands();

// Null when a head of this protocol version has no such command.
const Command* findCommand(std::string_view name, std::int32_t protocolVersion);

}  // namespace fringix::head
