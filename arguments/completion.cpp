// Completion scripts. Each finds out which (sub)command the words before lead to, its place, and offers what the tables have there.
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "arguments/describe.h"

namespace fringix::arguments {
namespace {

struct Option {
  std::vector<std::string> names;
  std::string help;
  bool takesValue;
};

struct Place {
  std::string path;  // of the program itself empty, of others each word with a space before it
  const Command* command;
  std::vector<Option> options;  // with those that are known everywhere
};

std::vector<Option> optionsOf(const Command& command) {
  std::vector<Option> options;
  for (const Argument& argument : command.arguments()) {
    if (!argument.isPositional()) options.push_back({argument.names(), argument.facts().help, !argument.isFlag()});
  }
  if (!command.version().empty()) options.push_back({{"--version"}, "Print the version", false});
  return options;
}

void addPlaces(std::vector<Place>& places, const Command& command, const std::string& path, std::vector<Option> known) {
  const std::vector<Option> own = optionsOf(command);
  known.insert(known.begin(), own.begin(), own.end());
  places.push_back({path, &command, known});
  for (const Command& subcommand : command.subcommands()) addPlaces(places, subcommand, path + " " + subcommand.name(), known);
}

std::vector<Place> placesOf(const Command& program) {
  std::vector<Place> places;
  addPlaces(places, program, "", {{{"-h", "--help"}, "Print a help message", false}});
  return places;
}

// As all three shells take it: nothing is special between single quotes but these, and, in fish, the backslash.
std::string quoted(std::string_view text, std::string_view quote) {
  std::string result = "'";
  for (const char character : text) character == '\'' ? result += quote : result += character;
  return result + "'";
}

std::string forShell(std::string_view text) { return quoted(text, "'\\''"); }

std::string forFish(std::string_view text) {
  std::string doubled;
  for (const char character : text) doubled += character == '\\' ? "\\\\" : std::string(1, character);
  return quoted(doubled, "\\'");
}

std::string functionOf(const Command& program) {
  std::string name = program.name();
  std::replace(name.begin(), name.end(), '-', '_');
  return "_" + name;
}

// The paths of all subcommands, as patterns.
std::string patterns(const std::vector<Place>& places, std::string_view separator) {
  std::string result;
  for (const Place& place : places) {
    if (!place.path.empty()) result += fmt::format("{}{}", result.empty() ? "" : separator, forShell(place.path));
  }
  return result.empty() ? "''" : result;
}

std::string joined(const std::vector<Option>& options, bool valuedOnly) {
  std::string result;
  for (const Option& option : options) {
    if (valuedOnly && !option.takesValue) continue;
    for (const std::string& name : option.names) result += (result.empty() ? "" : " ") + name;
  }
  return result;
}

std::string namesOfSubcommands(const Command& command) {
  std::string result;
  for (const Command& subcommand : command.subcommands()) result += (result.empty() ? "" : " ") + subcommand.name();
  return result;
}

std::string zshOffers(const Place& place) {
  std::string subcommands;
  for (const Command& subcommand : place.command->subcommands())
    subcommands += " " + forShell(subcommand.name() + ":" + subcommand.summary());
  std::string flags;
  for (const Option& option : place.options) {
    for (const std::string& name : option.names) flags += " " + forShell(name + ":" + option.help);
  }
  return fmt::format("  ({}) subcommands=({} )\n    flags=({} )\n    valued=({}) ;;\n", forShell(place.path), subcommands, flags,
                     joined(place.options, true));
}

std::string fishOption(const Option& option) {
  std::string result;
  for (const std::string& name : option.names) result += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  return fmt::format("{}{} -d {}", result, option.takesValue ? " -r" : "", forFish(option.help));
}

std::string fishOffers(const Command& program, const Place& place) {
  const std::string start = fmt::format("complete -c {} -n \"_{}_at {}\"", program.name(), functionOf(program), forFish(place.path));
  std::string result;
  for (const Command& subcommand : place.command->subcommands())
    result += fmt::format("{} -f -a {} -d {}\n", start, subcommand.name(), forFish(subcommand.summary()));
  for (const Option& option : place.options) result += start + fishOption(option) + "\n";
  return result;
}

constexpr const char* bashScript = R"({function}() {{
  local place='' word words='' subcommands='' flags='' valued=''
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case "$place $word" in
      {patterns}) place="$place $word" ;;
    esac
  done
  case $place in
{offers}  esac
  case " $valued " in *" ${{COMP_WORDS[COMP_CWORD-1]}} "*) return ;; esac
  case ${{COMP_WORDS[COMP_CWORD]}} in -*) words=$flags ;; *) words=$subcommands ;; esac
  COMPREPLY=($(compgen -W "$words" -- "${{COMP_WORDS[COMP_CWORD]}}"))
}}
complete -o default -F {function} {program}
)";

constexpr const char* zshScript = R"(#compdef {program}
local place='' word
local -a subcommands flags valued
for word in "${{(@)words[2,CURRENT-1]}}"; do
  case "$place $word" in
    ({patterns}) place="$place $word" ;;
  esac
done
case $place in
{offers}esac
if (( ${{valued[(Ie)${{words[CURRENT-1]}}]}} )); then
  _files
elif [[ ${{words[CURRENT]}} == -* ]]; then
  _describe -o option flags
elif (( ${{#subcommands}} )); then
  _describe subcommand subcommands
else
  _files
fi
)";

constexpr const char* fishScript = R"(function _{function}_at
    set -l place ''
    for word in (commandline -opc)[2..-1]
        switch "$place $word"
            case {patterns}
                set place "$place $word"
        end
    end
    test "$place" = "$argv[1]"
end
{offers})";

}  // namespace

std::string bashCompletion(const Command& program) {
  const std::vector<Place> places = placesOf(program);
  std::string offers;
  for (const Place& place : places) {
    offers += fmt::format("    {}) subcommands='{}' flags='{}' valued='{}' ;;\n", forShell(place.path), namesOfSubcommands(*place.command),
                          joined(place.options, false), joined(place.options, true));
  }
  return fmt::format(fmt::runtime(bashScript), fmt::arg("function", functionOf(program)), fmt::arg("program", program.name()),
                     fmt::arg("patterns", patterns(places, " | ")), fmt::arg("offers", offers));
}

std::string zshCompletion(const Command& program) {
  const std::vector<Place> places = placesOf(program);
  std::string offers;
  for (const Place& place : places) offers += zshOffers(place);
  return fmt::format(fmt::runtime(zshScript), fmt::arg("program", program.name()), fmt::arg("patterns", patterns(places, "|")),
                     fmt::arg("offers", offers));
}

std::string fishCompletion(const Command& program) {
  const std::vector<Place> places = placesOf(program);
  std::string offers;
  for (const Place& place : places) offers += fishOffers(program, place);
  return fmt::format(fmt::runtime(fishScript), fmt::arg("function", functionOf(program)), fmt::arg("patterns", patterns(places, " ")),
                     fmt::arg("offers", offers));
}

}  // namespace fringix::arguments
