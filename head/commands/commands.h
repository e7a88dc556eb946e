// The commands that a head understands: one row each, found by name.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "head/model/head_model.h"
#include "head/settings/status.h"
#include "head/wire/wire.h"

namespace fringix::head {

// What a command works with: the head, the client's connection (the name has been read, the arguments have not).
struct Call {
  HeadModel& model;
  Wire& wire;

  void reply(Status status) { wire.writeStatus(static_cast<std::int32_t>(status)); }
};

struct Command {
  std::string_view name;
  std::int32_t since;  // the protocol version that brought it; 0 for those that every head knows
  void (*run)(Call& call);
};

using CommandFamily = std::span<const Command>;

CommandFamily configurationCommands();
CommandFamily dataCommands();
CommandFamily identityCommands();
CommandFamily ioCommands();
CommandFamily maskCommands();
CommandFamily pictureCommands();
CommandFamily projectionCommands();
CommandFamily projectorCommands();
CommandFamily sequenceCommands();
CommandFamily settingsCommands();
CommandFamily statusCommands();

std::span<const CommandFamily> commandFamilies();  // all of them

bool isPicture(const Command& command);  // the reply is a picture and nothing else
std::vector<std::string> commandNames();

// Null when a head of this protocol version has no such command.
const Command* findCommand(std::string_view name, std::int32_t protocolVersion);

}  // namespace fringix::head
