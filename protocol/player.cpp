#include "protocol/player.h"

#include <cstdlib>

namespace fringix::protocol {

namespace {

bool tellsSuccess(Type type) { return type == Type::status || type == Type::answer || type == Type::outcome; }

// Whether nothing more belongs to the command, whatever fields come behind.
bool endsCommand(Type type, std::int64_t number) { return (type == Type::answer && number != 0) || (type == Type::size && number <= 0); }

std::string inHex(const Bytes& bytes) {
  constexpr std::size_t most = 16;
  std::string text = "bytes";
  for (std::size_t i = 0; i < bytes.size() && i < most; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text += {' ', "0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
  }
  return text + (bytes.size() > most ? " ..." : "");
}

std::string inWords(std::int64_t number) { return std::to_string(number) + ", " + inHex(encodeInteger(number)); }

class Player {
 public:
  Player(const Command& command, Connection& connection, Facts& facts, bool strict, Played& played)
      : command_(command), connection_(connection), facts_(facts), strict_(strict), played_(played) {}

  void play(const Exchange& exchange) {
    unsent_ = encodeText(exchange.command);
    for (std::size_t i = 0; i < exchange.values.size() && played_.inStep; ++i) {
      const Field& field = command_.fields[i];
      if (field.sender == Sender::client)
        unsent_ += encode(field, exchange.values[i], facts_);
      else
        hear(field, exchange.values[i]);
    }
    flush();
  }

 private:
  void flush() {
    if (!unsent_.empty()) connection_.send(unsent_);
    unsent_.clear();
  }

  void hear(const Field& field, const Value& value) {
    flush();
    if (isNumber(field.type))
      hearNumber(field, value);
    else if (field.type == Type::text)
      hearText(field, value);
    else
      hearBytes(field, value);
  }

  Bytes receive(std::size_t count) {
    Bytes bytes = count > 0 ? connection_.receive(count) : Bytes();
    offset_ += count;
    return bytes;
  }

  void hearNumber(const Field& field, const Value& value) {
    const std::int64_t expected = evaluate(value.text, facts_);
    const std::int64_t found = decodeInteger(receive(4));
    const Match match = strict_ && tellsSuccess(field.type) ? Match::exact : value.match;
    const bool fits = match == Match::exact ? static_cast<std::int32_t>(expected) == found : match == Match::any || found != 0;
    if (!fits) tell(field, 4, match == Match::exact ? inWords(expected) : "anything but 0", inWords(found));
    facts_[field.name] = found;
    const bool lastField = &field == &command_.fields.back();
    if (!lastField && endsCommand(field.type, found) != endsCommand(field.type, expected)) played_.inStep = false;
  }

  void hearText(const Field& field, const Value& value) {
    const Bytes digits = receive(6);
    const long length = std::strtol(digits.c_str(), nullptr, 10);
    if (length <= 0) {
      tell(field, 6, "the length of a text, at least 1", "\"" + digits + "\"");
      played_.inStep = false;
      return;
    }
    const Bytes found = receive(static_cast<std::size_t>(length));
    if (value.match == Match::exact && found != unquoted(value.text)) tell(field, found.size() + 6, value.text, "\"" + found + "\"");
  }

  void hearBytes(const Field& field, const Value& value) {
    const Bytes expected = encode(field, value, facts_);
    const Bytes found = receive(expected.size());
    if (value.text == "none" && strict_ && found != expected) tell(field, found.size(), "no picture, " + inHex(expected), inHex(found));
  }

  void tell(const Field& field, std::size_t size, const std::string& expected, const std::string& found) {
    played_.differences.push_back({command_.name, field.name, offset_ - size, expected, found});
  }

  const Command& command_;
  Connection& connection_;
  Facts& facts_;
  const bool strict_;
  Played& played_;
  Bytes unsent_;
  std::size_t offset_ = 0;
};

}  // namespace

Played play(const CommandTable& table, const Example& example, Connection& connection, Facts& facts, bool strict) {
  Played played;
  for (const Exchange& exchange : example.exchanges) {
    if (!played.inStep) break;
    Player(table.find(exchange.command), connection, facts, strict, played).play(exchange);
  }
  return played;
}

}  // namespace fringix::protocol
