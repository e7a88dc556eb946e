#include "arguments/command.h"

namespace fringix::arguments {

Command& Command::subcommand(std::string name, std::string summary) {
  return subcommands_.emplace_back(std::move(name), std::move(summary));
}

Argument& Command::positional(std::string name, Target target, std::string help) {
  return arguments_.emplace_back(std::move(name), std::move(target), std::move(help));
}

Argument& Command::option(std::string names, Target target, std::string help) {
  return arguments_.emplace_back(std::move(names), std::move(target), std::move(help));
}

Argument& Command::flag(std::string names, Target target, std::string help) {
  return arguments_.emplace_back(std::move(names), std::move(target), std::move(help));
}

void Command::note(std::string paragraph) { notes_.push_back(std::move(paragraph)); }

}  // namespace fringix::arguments
