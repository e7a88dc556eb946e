// What a program takes on its command line, as tables: commands, their arguments and what they run. Nothing here parses; parse.h does,
// and whatever else describes the program reads the same tables.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "arguments/argument.h"
#include "arguments/usage_error.h"

namespace fringix::arguments {

// Arguments are known behind subcommands, too. References to what was added stay valid.
class Command {
 public:
  Command(std::string name, std::string summary) : name_(std::move(name)), summary_(std::move(summary)) {}
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  // Where there are subcommands, one has to be given.
  Command& subcommand(std::string name, std::string summary);

  Argument& positional(std::string name, Target target, std::string help);
  Argument& option(std::string names, Target target, std::string help);
  Argument& flag(std::string names, Target target, std::string help);

  void note(std::string paragraph);                                  // below the help; one after the other
  void version(std::string text) { version_ = std::move(text); }     // what --version prints
  void run(std::function<void()> work) { work_ = std::move(work); }  // after all arguments have been taken

  const std::string& name() const { return name_; }
  const std::string& summary() const { return summary_; }
  const std::string& version() const { return version_; }
  const std::vector<std::string>& notes() const { return notes_; }
  const std::function<void()>& work() const { return work_; }
  const std::deque<Argument>& arguments() const { return arguments_; }
  const std::deque<Command>& subcommands() const { return subcommands_; }

 private:
  std::string name_;
  std::string summary_;
  std::string version_;
  std::vector<std::string> notes_;
  std::function<void()> work_;
  std::deque<Argument> arguments_;
  std::deque<Command> subcommands_;
};

}  // namespace fringix::arguments
