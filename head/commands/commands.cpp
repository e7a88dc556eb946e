#include "head/commands/commands.h"

#include <array>

namespace fringix::head {

std::span<const CommandFamily> commandFamilies() {
  static const std::array families{configurationCommands(), dataCommands(),     identityCommands(),   ioCommands(),
                                   maskCommands(),          pictureCommands(),  projectionCommands(), projectorCommands(),
                                   sequenceCommands(),      settingsCommands(), statusCommands()};
  return families;
}

const Command* findCommand(std::string_view name, std::int32_t protocolVersion) {
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) {
      if (command.name == name && command.since <= protocolVersion) return &command;
    }
  }
  return nullptr;
}

}  // namespace fringix::head
