#include "head/commands.h"

namespace fringix::head {

const Command* findCommand(std::string_view name, std::int32_t protocolVersion) {
  for (const auto family : {identityCommands(), pictureCommands(), sequenceCommands(), projectionCommands()}) {
    for (const Command& command : family) {
      if (command.name == name && command.since <= protocolVersion) return &command;
    }
  }
  return nullptr;
}

}  // namespace fringix::head
