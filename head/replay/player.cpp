#include "head/replay/player.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace fringix::head {

namespace {

using protocol::Sender;
using protocol::Type;
using recording::FieldValue;
using recording::Kind;
using recording::Piece;
using recording::RecordedCommand;

constexpr std::size_t longestName = 64;
constexpr std::size_t longestShown = 60;
constexpr const char* signOfLife = "100MSG_SLNOOP";

std::string inQuotes(std::string_view text) {
  return "\"" + std::string(text.substr(0, longestShown)) + (text.size() > longestShown ? "\"..." : "\"");
}

std::string inHex(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {"0123456789ABCDEF"[value / 16], "0123456789ABCDEF"[value % 16]};
}

// What the client says whenever it likes.
bool mayBeMissing(const std::string& name) { return name == signOfLife || recording::hasConstantReply(name); }

}  // namespace

Player::Player(const Replay& replay, Wire& wire, Tell tell, Trigger trigger)
    : replay_(replay), wire_(wire), tell_(std::move(tell)), trigger_(std::move(trigger)) {}

void Player::greet(const RecordedConnection& connection) {
  wire_.writeBytes(reinterpret_cast<const std::uint8_t*>(connection.greeting.data()), connection.greeting.size());
  wire_.flush();
}

bool Player::play(const RecordedConnection& connection, std::int32_t version) {
  connection_ = &connection;
  recording::ConversationReader reader(replay_.file);
  reader.selectConnection(connection.number);
  while (const auto happening = reader.next()) {
    if (!happening->command) continue;
    const RecordedCommand& greeting = *happening->command;
    ++index_;
    reached(greeting.end());
    for (const FieldValue& value : greeting.fields) {
      if (value.field->sender == Sender::client && value.number != version)
        tellAt(greeting, 0, "the version was " + std::to_string(value.number) + ", the client says " + std::to_string(version));
    }
    break;
  }
  return playToTheEnd(reader);
}

bool Player::playRefusal(const RecordedConnection& connection) {
  connection_ = &connection;
  recording::ConversationReader reader(replay_.file);
  reader.selectConnection(connection.number);
  return playToTheEnd(reader);
}

bool Player::playToTheEnd(recording::ConversationReader& reader) {
  while (const auto happening = reader.next()) {
    const recording::Record& record = happening->record;
    if (happening->command) {
      playCommand(*happening->command);
      ++index_;
    } else if (record.connection == connection_->number && record.kind != Kind::opened) {
      return end(record);
    } else if (record.connection == connection_->number) {
      reached(record.time);
    }
  }
  awaitNothing("the recording ends here");
  return false;
}

void Player::playCommand(const RecordedCommand& command) {
  wire_.beginCommand();
  readUpTo_ = 0;
  try {
    const bool hasName = !command.name.empty() && command.command != &recording::greeting();
    if (!hasName || meetName(command)) playPieces(command);
  } catch (const Disconnected&) {
    if (!gaveUp_ && !mayBeMissing(command.name)) tell_(place(command) + ": the client leaves, and the recorded one did not");
    throw;
  }
}

void Player::playPieces(const RecordedCommand& command) {
  std::size_t said[2] = {0, 0};
  for (std::size_t i = 0; i < command.pieces.size(); ++i) {
    const Piece& piece = command.pieces[i];
    if (piece.from == Piece::From::trigger) {
      waitUntil(piece.time, true);
      trigger_();
      continue;
    }
    std::size_t& begin = said[piece.from == Piece::From::client ? 0 : 1];
    if (piece.from == Piece::From::head)
      answer(command, begin, piece);
    else
      readTurn(command, begin, begin + piece.size);
    begin += piece.size;
    reached(piece.time);
  }
}

// Reads names until it is the one of the record. False: the client of now leaves the command away.
bool Player::meetName(const RecordedCommand& command) {
  for (;;) {
    if (!name_) name_ = readText();
    if (*name_ == command.name) break;
    const auto constant = connection_->constants.find(*name_);
    if (constant != connection_->constants.end())
      answerConstant(constant->second);
    else if (*name_ != signOfLife && mayBeMissing(command.name))
      return false;
    else if (*name_ != signOfLife)
      giveUp(place(command) + ": the client says " + inQuotes(*name_) + ", to which the recording has no answer here");
    name_.reset();
  }
  readUpTo_ = protocol::encodeText(*name_).size();
  name_.reset();
  return true;
}

void Player::answerConstant(const RecordedCommand& command) {
  for (const FieldValue& value : command.fields) {
    if (protocol::isNumber(value.field->type)) facts_[value.field->name] = value.number;
  }
  const std::string& bytes = command.by(Sender::head).bytes;
  wire_.writeBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  wire_.flush();
}

// What the client of the record said from `begin` to `end`. The client of now may say as much in its own words.
void Player::readTurn(const RecordedCommand& command, std::size_t begin, std::size_t end) {
  for (const FieldValue& value : command.fields) {
    if (value.field->sender != Sender::client || value.begin < readUpTo_ || value.begin >= end) continue;
    readField(command, value);
    readUpTo_ = value.begin + value.size;
  }
  begin = std::max(begin, readUpTo_);
  if (begin < end) readRaw(command, begin, end - begin);
  readUpTo_ = std::max(readUpTo_, end);
}

void Player::readField(const RecordedCommand& command, const FieldValue& value) {
  if (protocol::isNumber(value.field->type)) return compareNumber(command, value);
  const bool isText = value.field->type == Type::text;
  const auto size = isText ? std::optional<std::size_t>(0) : recording::sizeOf(*value.field, facts_);
  if (!size) giveUp(place(command) + ": the client says numbers of which no size of " + value.field->name + " can be made");
  const std::string found = isText ? protocol::encodeText(readText()) : readBytes(*size);
  const std::string_view expected = command.bytesOf(value);
  if (found == expected) return;
  const std::string& name = value.field->name;
  if (isText)
    return tellAt(command, value.begin, name + " was " + inQuotes(expected.substr(6)) + ", the client says " + inQuotes(found.substr(6)));
  if (found.size() != expected.size())
    return tellAt(command, value.begin,
                  name + " had " + std::to_string(expected.size()) + " bytes, the client says " + std::to_string(found.size()));
  const auto differs = std::mismatch(found.begin(), found.end(), expected.begin());
  tellAt(command, value.begin + static_cast<std::size_t>(differs.first - found.begin()),
         name + " has " + inHex(*differs.second) + " there, the client says " + inHex(*differs.first));
}

void Player::compareNumber(const RecordedCommand& command, const FieldValue& value) {
  const std::int32_t found = wire_.readInt();
  facts_[value.field->name] = found;
  if (found != value.number)
    tellAt(command, value.begin, value.field->name + " was " + std::to_string(value.number) + ", the client says " + std::to_string(found));
}

std::string Player::readBytes(std::size_t count) {
  const std::vector<std::uint8_t> bytes = wire_.readBlock(count);
  return {bytes.begin(), bytes.end()};
}

std::string Player::readText() {
  try {
    return wire_.readText();
  } catch (const ProtocolError&) {
    giveUp("the client says something that no client says, where a text should be");
  }
}

// What nobody knows the meaning of has to be the same bytes.
void Player::readRaw(const RecordedCommand& command, std::size_t begin, std::size_t count) {
  std::string found;
  if (name_) found = protocol::encodeText(*std::exchange(name_, std::nullopt)).substr(0, count);
  found += readBytes(count - found.size());
  const std::string_view expected = std::string_view(command.by(Sender::client).bytes).substr(begin, count);
  const auto differs = std::mismatch(found.begin(), found.end(), expected.begin());
  if (differs.first == found.end()) return;
  tellAt(command, begin + static_cast<std::size_t>(differs.first - found.begin()),
         "there was " + inHex(*differs.second) + ", the client says " + inHex(*differs.first));
}

void Player::answer(const RecordedCommand& command, std::size_t begin, const Piece& piece) {
  checkReply(command, begin, begin + piece.size);
  waitUntil(piece.time);
  const std::string& bytes = command.by(Sender::head).bytes;
  wire_.writeBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()) + begin, piece.size);
  wire_.flush();
}

// Whether the client takes as many bytes as there are: what it has asked for may have another size.
void Player::checkReply(const RecordedCommand& command, std::size_t begin, std::size_t end) {
  for (const FieldValue& value : command.fields) {
    if (value.field->sender != Sender::head || value.begin < begin || value.begin >= end) continue;
    if (protocol::isNumber(value.field->type)) {
      facts_[value.field->name] = value.number;
    } else if (value.field->type != Type::text) {
      const auto size = recording::sizeOf(*value.field, facts_);
      if (size != value.size)
        giveUp(place(command) + ": the client asks for a " + value.field->name + " of " + (size ? std::to_string(*size) : "no") +
               " bytes, and the recorded one has " + std::to_string(value.size));
    }
  }
}

bool Player::end(const recording::Record& record) {
  if (record.kind == Kind::closedByClient) {
    awaitNothing("the recorded client left here");
    return false;
  }
  waitUntil(record.time);
  return !record.payload.empty() && record.payload[0] != 0;
}

// A client that says more than is recorded is told of; that it leaves is as it should be.
void Player::awaitNothing(const char* why) {
  do {
    if (!name_) name_ = readText();
    const auto constant = connection_->constants.find(*name_);
    if (constant != connection_->constants.end()) {
      answerConstant(constant->second);
    } else if (*name_ != signOfLife && *name_ != "ByeBye=") {
      giveUp("behind command " + std::to_string(index_ == 0 ? 0 : connection_->commands[index_ - 1]) + ": " + why + ", the client says " +
             inQuotes(*name_));
    }
    name_.reset();
  } while (true);
}

void Player::waitUntil(std::uint64_t time, bool always) {
  if (replay_.atOnce && !always) return;
  const auto past = std::chrono::nanoseconds(time > recordedTime_ ? time - recordedTime_ : 0);
  wire_.pauseUntil(time_ + std::chrono::duration_cast<Clock::duration>(past));
}

void Player::reached(std::uint64_t time) {
  recordedTime_ = time;
  time_ = Clock::now();
}

void Player::giveUp(const std::string& difference) {
  gaveUp_ = true;
  tell_(difference);
  throw Disconnected{};
}

void Player::tellAt(const RecordedCommand& command, std::size_t byte, const std::string& what) {
  tell_(place(command) + ", byte " + std::to_string(byte) + ": " + what);
}

std::string Player::place(const RecordedCommand& command) const {
  return "command " + std::to_string(connection_->commands[index_]) + ", " + (command.name.empty() ? "unknown" : command.name);
}

}  // namespace fringix::head
