#include "protocol/conversations.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

#include "protocol/encoding.h"

namespace fringix::protocol {

namespace {

constexpr std::pair<std::string_view, Type> types[] = {{"int", Type::integer},     {"status", Type::status}, {"answer", Type::answer},
                                                       {"outcome", Type::outcome}, {"size", Type::size},     {"text", Type::text},
                                                       {"name", Type::name},       {"bytes", Type::bytes},   {"picture", Type::picture}};

[[noreturn]] void refuse(const std::string& command, std::string_view line) {
  throw std::runtime_error("conversations: " + command + ": \"" + std::string(line) + "\" has no meaning");
}

std::string_view untilSpace(std::string_view text) { return text.substr(0, text.find(' ')); }

// Takes a word and the spaces behind it from the front; a text in quotes ends with its second quote.
std::string_view takeWord(std::string_view& rest) {
  std::size_t end = std::min(rest.find(' '), rest.size());
  if (const std::size_t quote = rest.find('"'); quote < end) end = std::min(rest.find('"', quote + 1), rest.size() - 1) + 1;
  const std::string_view word = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.find_first_not_of(' ', end), rest.size()));
  return word;
}

bool hasSize(Type type) { return type == Type::name || type == Type::bytes || type == Type::picture; }

Field parseField(const std::string& command, Sender sender, std::string_view line) {
  std::string_view rest = line;
  Field field{sender, std::string(takeWord(rest)), Type::integer, {}};
  const std::string_view typeName = takeWord(rest);
  const auto* type = std::find_if(std::begin(types), std::end(types), [=](const auto& entry) { return entry.first == typeName; });
  if (type == std::end(types)) refuse(command, line);
  field.type = type->second;
  if (hasSize(field.type)) field.size = takeWord(rest);
  return field;
}

Value parseValue(std::string_view word) {
  const std::size_t sign = word.find_first_of("=~!");
  if (sign == std::string_view::npos) return {std::string(word), Match::any, {}};
  const Match match = word[sign] == '=' ? Match::exact : word[sign] == '~' ? Match::any : Match::notZero;
  return {std::string(word.substr(0, sign)), match, std::string(word.substr(sign + 1))};
}

// Names of commands begin with a number, but for the farewell; names of fields never do.
bool isCommand(std::string_view word) {
  return !word.empty() && (std::isdigit(static_cast<unsigned char>(word.front())) != 0 || word.back() == '=');
}

// "> COMMAND field=value ...", "> field=value ..." or "< field=value ...".
void takeTurn(const std::string& command, Example& example, std::string_view line) {
  std::string_view rest = line.substr(std::min<std::size_t>(2, line.size()));
  if (line[0] == '>' && isCommand(untilSpace(rest))) example.exchanges.push_back({std::string(takeWord(rest)), {}});
  if (example.exchanges.empty()) refuse(command, line);
  while (!rest.empty()) example.exchanges.back().values.push_back(parseValue(takeWord(rest)));
}

// Where the text of a line goes as it stands; null for lines of other kinds.
std::string* placeOf(Command& command, std::string_view key) {
  if (key == "does") return &command.does;
  if (key == "family") return &command.family;
  if (key == "function") return &command.function;
  if (command.examples.empty()) return nullptr;
  if (key == "changes") return &command.examples.back().changes;
  return key == "result" ? &command.examples.back().result : nullptr;
}

void takeLineOf(Command& command, std::string_view key, std::string_view rest, std::string_view line) {
  const bool isTurn = key == ">" || key == "<";
  if (std::string* const place = placeOf(command, key)) {
    *place = rest;
  } else if (key == "since") {
    command.since = static_cast<std::int32_t>(parseNumber(rest));
  } else if (key == "send" || key == "reply") {
    command.fields.push_back(parseField(command.name, key == "send" ? Sender::client : Sender::head, rest));
  } else if (key == "example") {
    command.examples.emplace_back().title = rest;
  } else if (isTurn && !command.examples.empty()) {
    takeTurn(command.name, command.examples.back(), line);
  } else {
    refuse(command.name, line);
  }
}

void takeLine(std::vector<Command>& commands, std::string_view line) {
  std::string_view rest = line;
  const std::string_view key = takeWord(rest);
  if (key == "command") {
    commands.emplace_back().name = rest;
  } else if (commands.empty()) {
    refuse("the beginning", line);
  } else {
    takeLineOf(commands.back(), key, rest, line);
  }
}

}  // namespace

CommandTable::CommandTable(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > 0) takeLine(commands_, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  check();
}

const CommandTable& CommandTable::ofTheProtocol() {
  static const CommandTable table(conversationFiles());
  return table;
}

// Values that stand for the fields of their command, in their order.
void CommandTable::check() const {
  for (const Command& command : commands_) {
    for (const Example& example : command.examples) {
      for (const Exchange& exchange : example.exchanges) {
        const auto& fields = find(exchange.command).fields;
        const auto differ = [](const Value& value, const Field& field) { return value.field == field.name; };
        if (exchange.values.size() > fields.size() || !std::equal(exchange.values.begin(), exchange.values.end(), fields.begin(), differ)) {
          refuse(command.name, example.title + ", " + exchange.command);
        }
      }
    }
  }
}

bool CommandTable::has(std::string_view name) const {
  return std::any_of(commands_.begin(), commands_.end(), [=](const Command& command) { return command.name == name; });
}

const Command& CommandTable::find(std::string_view name) const {
  const auto command = std::find_if(commands_.begin(), commands_.end(), [=](const Command& entry) { return entry.name == name; });
  if (command == commands_.end()) throw std::runtime_error("conversations: there is no command " + std::string(name));
  return *command;
}

}  // namespace fringix::protocol
