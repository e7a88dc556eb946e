// Manual pages, in the language of man(7).
#include <fmt/format.h>

#include <sstream>
#include <string>
#include <string_view>

#include "arguments/describe.h"

namespace fringix::arguments {
namespace {

// Text in which nothing is taken for a request or an escape.
std::string plain(std::string_view text) {
  std::string result = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char character : text) {
    if (character == '\\') {
      result += "\\e";
    } else if (character == '-') {
      result += "\\-";
    } else {
      result += character;
    }
  }
  return result;
}

// One that has lines of its own keeps them.
std::string paragraph(const std::string& text) {
  std::string result = ".PP\n";
  const bool hasLines = text.find('\n') != std::string::npos;
  if (hasLines) result += ".nf\n";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) result += line.empty() ? ".sp\n" : plain(line) + "\n";
  return hasLines ? result + ".fi\n" : result;
}

std::string valueOf(const ArgumentFacts& facts) {
  return fmt::format("\\fI{}\\fR", plain(facts.valueName.empty() ? "VALUE" : facts.valueName));
}

std::string heading(const Argument& argument) {
  const ArgumentFacts& facts = argument.facts();
  if (argument.isPositional()) return fmt::format("\\fI{}\\fR", plain(facts.names));
  std::string result;
  for (const std::string& name : argument.names()) result += fmt::format("{}\\fB{}\\fR", result.empty() ? "" : ", ", plain(name));
  return argument.isFlag() ? result : result + " " + valueOf(facts);
}

std::string entry(const Argument& argument) {
  const ArgumentFacts& facts = argument.facts();
  const std::string defaultText = facts.defaultText.empty() ? "" : fmt::format(" (default: {})", facts.defaultText);
  const char* const required = facts.required ? " (required)" : "";
  return fmt::format(".TP\n{}\n{}{}{}\n", heading(argument), plain(facts.help), plain(defaultText), required);
}

std::string synopsis(const Command& command, const std::string& path) {
  std::string result = fmt::format(R"(\fB{}\fR [\fIOPTIONS\fR])", plain(path));
  for (const Argument& argument : command.arguments()) {
    if (!argument.isPositional()) continue;
    const std::string name = fmt::format("\\fI{}{}\\fR", plain(argument.facts().names), argument.isList() ? "..." : "");
    result += argument.facts().required ? " " + name : " [" + name + "]";
  }
  if (!command.subcommands().empty()) result += " \\fISUBCOMMAND\\fR";
  return result + "\n";
}

std::string argumentsOf(const Command& command) {
  std::string result;
  for (const Argument& argument : command.arguments()) result += entry(argument);
  return result;
}

std::string notesOf(const Command& command) {
  std::string result;
  for (const std::string& note : command.notes()) result += paragraph(note);
  return result;
}

std::string subcommandsOf(const Command& command, const std::string& path) {
  std::string result;
  for (const Command& subcommand : command.subcommands()) {
    const std::string words = path + " " + subcommand.name();
    result += fmt::format(".SS {}\n{}.PP\n{}", plain(words.substr(words.find(' ') + 1)), synopsis(subcommand, words),
                          plain(subcommand.summary()));
    result += "\n" + argumentsOf(subcommand) + notesOf(subcommand) + subcommandsOf(subcommand, words);
  }
  return result;
}

std::string sectionIfAny(const char* title, const std::string& content) {
  return content.empty() ? "" : fmt::format(".SH {}\n{}", title, content);
}

}  // namespace

std::string manualPage(const Command& program) {
  const std::string& name = program.name();
  std::string result = fmt::format(".TH \"{}\" 1 \"\" \"Fringix\" \"User Commands\"\n", name);
  result += fmt::format(".SH NAME\n{} \\- {}\n.SH SYNOPSIS\n{}", plain(name), plain(program.summary()), synopsis(program, name));
  result += ".SH OPTIONS\n" + argumentsOf(program) +
            ".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nPrint a help message, behind a subcommand that of the subcommand\n";
  if (!program.version().empty()) result += ".TP\n\\fB\\-\\-version\\fR\nPrint the version\n";
  return result + sectionIfAny("SUBCOMMANDS", subcommandsOf(program, name)) + sectionIfAny("NOTES", notesOf(program));
}

}  // namespace fringix::arguments
