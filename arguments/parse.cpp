// The one file that sees CLI11, which takes long to compile.
#include "arguments/parse.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "arguments/describe.h"
#include "arguments/suggestion.h"

namespace fringix::arguments {
namespace {

void stateFlag(CLI::App& app, const Argument& argument) {
  app.add_flag_callback(
         argument.facts().names, [&argument] { argument.take({}); }, argument.facts().help)
      ->disable_flag_override();
}

void stateCount(CLI::Option& option, const ArgumentFacts& facts) {
  const int count = static_cast<int>(facts.valueCount);
  if (count > 0) {
    option.expected(count);
  } else {
    option.expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args(!facts.oneAtATime);
  }
}

void stateOption(CLI::App& app, const Argument& argument) {
  const ArgumentFacts& facts = argument.facts();
  const auto take = [&argument](const CLI::results_t& values) {
    argument.take(values);
    return true;
  };
  CLI::Option* option = app.add_option(facts.names, take, facts.help);
  option->type_name(facts.valueName)->required(facts.required)->default_str(facts.defaultText);
  if (argument.isList()) stateCount(*option, facts);
}

std::string joined(const std::vector<std::string>& paragraphs) {
  std::string text;
  for (const std::string& paragraph : paragraphs) text += (text.empty() ? "" : "\n\n") + paragraph;
  return text;
}

void state(CLI::App& app, const Command& command) {
  for (const Argument& argument : command.arguments()) argument.isFlag() ? stateFlag(app, argument) : stateOption(app, argument);
  if (!command.version().empty()) app.set_version_flag("--version", command.version());
  if (!command.notes().empty()) app.footer(joined(command.notes()));
  if (command.work()) app.callback(command.work());
  for (const Command& subcommand : command.subcommands()) state(*app.add_subcommand(subcommand.name(), subcommand.summary()), subcommand);
  if (!command.subcommands().empty()) app.require_subcommand(1);
}

const CLI::App& innermost(const CLI::App& program) {
  const CLI::App* app = &program;
  while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
  return *app;
}

std::vector<std::string> subcommandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* child : app.get_subcommands([](const CLI::App*) { return true; })) names.push_back(child->get_name());
  return names;
}

std::vector<std::string> optionsOf(const CLI::App* app) {
  std::vector<std::string> names;
  for (; app != nullptr; app = app->get_parent()) {
    for (const CLI::Option* option : app->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

std::string listed(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  return list;
}

// As users write it; CLI11 leaves the dashes of flags out.
std::string nameOf(const CLI::Option& option) {
  return option.get_lnames().empty() ? option.get_name() : "--" + option.get_lnames().front();
}

// The one with whose name a complaint of CLI11 begins.
const CLI::Option* optionOf(const CLI::App* app, const std::string& complaint) {
  for (; app != nullptr; app = app->get_parent()) {
    for (const CLI::Option* option : app->get_options()) {
      const std::string name = nameOf(*option);
      for (const std::string& start : {name + ":", name + " ", name.substr(name.find_first_not_of('-')) + " was given"}) {
        if (complaint.starts_with(start)) return option;
      }
    }
  }
  return nullptr;
}

// CLI11 counts what it got, but does not say what it wants.
std::string countComplaint(const CLI::Option& option) {
  const std::string name = nameOf(option);
  const std::string& meaning = option.get_description();
  const auto given = static_cast<int>(option.results().size());
  const int needed = option.get_items_expected_min();
  if (option.get_items_expected_max() == 0) return name + " takes no value";
  if (given >= needed && option.get_items_expected_max() == needed) return name + " can be given once only";
  if (given == 0 || given >= needed) return name + " needs a value: " + meaning;
  return name + " needs " + std::to_string(needed) + " values, not " + std::to_string(given) + ": " + meaning;
}

std::string requirement(const CLI::App& app, const std::string& complaint) {
  if (const CLI::Option* missing = optionOf(&app, complaint)) return nameOf(*missing) + " is required: " + missing->get_description();
  return "a subcommand is required, one of " + listed(subcommandsOf(app));
}

// What is missing, if nothing is there that is not understood: the user's eye is to fall on that.
std::string complaint(const CLI::App& program, const CLI::ParseError& error) {
  const std::vector<std::string> extras = program.remaining(true);
  const int code = error.get_exit_code();
  const bool isMissingOrExtra =
      code == static_cast<int>(CLI::ExitCodes::RequiredError) || code == static_cast<int>(CLI::ExitCodes::ExtrasError);
  const CLI::App& app = innermost(program);
  const CLI::Option* option = optionOf(&app, error.what());
  if (code == static_cast<int>(CLI::ExitCodes::ArgumentMismatch) && option != nullptr) return countComplaint(*option);
  if (!isMissingOrExtra) return error.what();
  if (extras.empty()) return requirement(app, error.what());
  const std::string quoted = "\"" + extras.front() + "\"";
  if (extras.front().starts_with('-')) return quoted + " is no option" + didYouMean(extras.front(), optionsOf(&app));
  if (app.get_require_subcommand_min() > 0) return quoted + " is no subcommand" + didYouMean(extras.front(), subcommandsOf(app));
  return quoted + " is one argument too many";
}

}  // namespace

bool parse(const Command& program, int argc, const char* const* argv) {
  if (describe(program, argc, argv)) return false;
  CLI::App app(program.summary(), program.name());
  app.allow_windows_style_options(false);  // or a path would be taken for one
  app.fallthrough();
  state(app, program);
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::Success& wanted) {
    app.exit(wanted);
    return false;
  } catch (const CLI::ParseError& error) {
    throw UsageError(complaint(app, error));
  }
}

}  // namespace fringix::arguments
