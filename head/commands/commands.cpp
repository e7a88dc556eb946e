#include "head/commands/commands.h"

#include <algorithm>
#include <array>

namespace fringix::head {

std::span<const CommandFamily> commandFamilies() {
  static const std::array families{configurationCommands(), dataCommands(),     identityCommands(),   ioCommands(),
                                   maskCommands(),          pictureCommands(),  projectionCommands(), projectorCommands(),
                                   sequenceCommands(),      settingsCommands(), statusCommands()};
  return families;
}

bool isPicture(const Command& command) {
  const CommandFamily pictures = pictureCommands();
  return std::any_of(pictures.begin(), pictures.end(), [&](const Command& picture) { return &picture == &command; });
}

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) names.emplace_back(command.name);
  }
  return names;
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
