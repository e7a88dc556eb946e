// The table of the protocol's commands: one file of conversations/ for each, with its fields and with examples of what crosses the wire.
// conversations/README.md says how they are written. Library and simulated head know nothing of it: they are held against it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::protocol {

enum class Sender { client, head };

enum class Type { integer, status, answer, outcome, size, text, name, bytes, picture };

struct Field {
  Sender sender;
  std::string name;
  Type type;
  std::string size;  // of a name, bytes or a picture: numbers and fields before it, with * and /
};

enum class Match { exact, any, notZero };

// What a field is in an example. A value that is left out stands for bytes of any kind.
struct Value {
  std::string field;
  Match match = Match::any;
  std::string text;  // as written: a number, "a text", the fields that it is made of, or `none` for a picture that there is not
};

// One command and what is answered to it: a value for each of its fields, in their order, up to the one that ends it.
struct Exchange {
  std::string command;
  std::vector<Value> values;
};

struct Example {
  std::string title;
  std::string changes;  // what it leaves changed on a head; empty: nothing
  std::string result;   // what the library's function makes of it; empty: success
  std::vector<Exchange> exchanges;
};

struct Command {
  std::string name;
  std::string does;
  std::string family;
  std::string function;    // of the library; "-": none that is exported
  std::int32_t since = 0;  // the protocol version that brought it
  std::vector<Field> fields;
  std::vector<Example> examples;
};

class CommandTable {
 public:
  explicit CommandTable(std::string_view text);  // throws std::runtime_error for what is no table
  static const CommandTable& ofTheProtocol();

  const std::vector<Command>& commands() const { return commands_; }
  const Command& find(std::string_view name) const;  // throws std::runtime_error
  bool has(std::string_view name) const;

 private:
  void check() const;

  std::vector<Command> commands_;
};

std::string_view conversationFiles();  // all of them, one after the other

}  // namespace fringix::protocol
