#include "recording/commands.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace fringix::recording {

namespace {

using protocol::Command;
using protocol::CommandTable;
using protocol::Field;
using protocol::Sender;
using protocol::Type;

constexpr std::size_t lengthDigits = 6;
constexpr std::size_t longestName = 64;
constexpr std::size_t longestBlock = std::size_t{256} << 20;

Piece::From from(Sender sender) { return sender == Sender::client ? Piece::From::client : Piece::From::head; }

}  // namespace

const Command& greeting() {
  static const Command command{greetingName,
                               "begins a connection",
                               "session",
                               "-",
                               0,
                               {{Sender::head, "greeting", Type::integer, ""}, {Sender::client, "client", Type::integer, ""}},
                               {}};
  return command;
}

std::optional<std::size_t> sizeOf(const Field& field, const protocol::Facts& facts) {
  try {
    const std::int64_t size = protocol::evaluate(field.size, facts);
    if (size >= 0 && size <= static_cast<std::int64_t>(longestBlock)) return static_cast<std::size_t>(size);
  } catch (const std::runtime_error&) {  // too large, or made of what nobody has said
  }
  return {};
}

std::optional<std::size_t> textLength(std::string_view digits) {
  digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (error != std::errc{} || end != digits.data() + digits.size()) return {};
  return length;
}

bool endsCommand(Type type, std::int64_t number) { return (type == Type::answer && number != 0) || (type == Type::size && number <= 0); }

bool hasConstantReply(std::string_view command) {
  constexpr std::array<std::string_view, 5> names = {"20MSG_SLGetProtocolVersion", "21MSG_SLGetSerial", "22MSG_SLGetPixelDepth",
                                                     "40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension"};
  return std::find(names.begin(), names.end(), command) != names.end();
}

Assembler::Assembler(std::uint32_t connection) {
  current_.connection = connection;
  current_.name = greetingName;
  current_.command = &greeting();
}

void Assembler::say(Sender sender, std::uint64_t time, std::string_view bytes) {
  if (bytes.empty()) return;
  waiting_[static_cast<std::size_t>(sender)].push_back({time, std::string(bytes), 0});
  while (advance()) {
  }
}

std::optional<RecordedCommand> Assembler::next() {
  if (over_.empty()) return {};
  RecordedCommand command = std::move(over_.front());
  over_.pop_front();
  return command;
}

// A client that did not wait for a reply has begun commands that nobody has looked at yet.
void Assembler::end() {
  for (std::size_t early = earlyBytes(); early > 0 && !lost_; early = earlyBytes()) {
    close();
    while (advance()) {
    }
    if (earlyBytes() == early) giveUp();
  }
  for (const Sender sender : {Sender::client, Sender::head}) takeAll(sender);
  close();
}

// One step; false: more has to be said first.
bool Assembler::advance() {
  if (lost_) {
    for (const Sender sender : {Sender::client, Sender::head}) takeAll(sender);
    return false;
  }
  if (!current_.complete) return current_.command == nullptr ? readName() : advanceField();
  const std::size_t before = current_.by(Sender::head).bytes.size();
  takeAll(Sender::head);
  current_.surplus += current_.by(Sender::head).bytes.size() - before;
  if (waiting_[static_cast<std::size_t>(Sender::client)].empty()) return false;
  close();
  return true;
}

// Takes bytes until the field that is being read has `count`; false: not all of them are there yet.
bool Assembler::take(Sender sender, std::size_t count) {
  auto& chunks = waiting_[static_cast<std::size_t>(sender)];
  std::string& bytes = current_.by(sender).bytes;
  while (bytes.size() < unitBegin_ + count && !chunks.empty()) {
    Chunk& chunk = chunks.front();
    const std::size_t size = std::min(chunk.bytes.size() - chunk.taken, unitBegin_ + count - bytes.size());
    bytes.append(chunk.bytes, chunk.taken, size);
    addPiece(sender, chunk.time, size);
    chunk.taken += size;
    if (chunk.taken == chunk.bytes.size()) chunks.pop_front();
  }
  return bytes.size() >= unitBegin_ + count;
}

void Assembler::takeAll(Sender sender) {
  for (const Chunk& chunk : std::exchange(waiting_[static_cast<std::size_t>(sender)], {})) {
    current_.by(sender).bytes.append(chunk.bytes, chunk.taken);
    addPiece(sender, chunk.time, chunk.bytes.size() - chunk.taken);
  }
}

void Assembler::addPiece(Sender sender, std::uint64_t time, std::size_t size) {
  const bool goesOn = !current_.pieces.empty() && current_.pieces.back().from == from(sender) && current_.pieces.back().time == time;
  if (goesOn)
    current_.pieces.back().size += size;
  else
    current_.pieces.push_back({from(sender), time, size});
}

std::size_t Assembler::earlyBytes() const {
  std::size_t size = 0;
  for (const Chunk& chunk : waiting_[static_cast<std::size_t>(Sender::client)]) size += chunk.bytes.size() - chunk.taken;
  return size;
}

bool Assembler::readName() {
  if (!take(Sender::client, lengthDigits)) return false;
  const auto length = textLength(std::string_view(current_.by(Sender::client).bytes).substr(0, lengthDigits));
  if (!length || *length > longestName) {
    giveUp();
    return true;
  }
  if (!take(Sender::client, lengthDigits + *length)) return false;
  const std::string name = current_.by(Sender::client).bytes.substr(lengthDigits);
  if (!CommandTable::ofTheProtocol().has(name)) {
    giveUp();
    return true;
  }
  current_.name = name;
  begin();
  return true;
}

// The name has been read.
void Assembler::begin() {
  current_.command = &CommandTable::ofTheProtocol().find(current_.name);
  current_.complete = current_.command->fields.empty();
  if (!current_.complete) unitBegin_ = current_.by(current_.command->fields.front().sender).bytes.size();
}

bool Assembler::advanceField() {
  const Field& field = current_.command->fields[nextField_];
  if (field.type == Type::text) return readText(field);
  const std::size_t begin = unitBegin_;
  const auto size = protocol::isNumber(field.type) ? std::optional<std::size_t>(4) : sizeOf(field, facts_);
  if (!size) {
    giveUp();
    return true;
  }
  if (!take(field.sender, *size)) return false;
  const std::int64_t number =
      protocol::isNumber(field.type) ? protocol::decodeInteger(current_.by(field.sender).bytes.substr(begin, 4)) : 0;
  store(field, begin, number);
  return true;
}

bool Assembler::readText(const Field& field) {
  if (!take(field.sender, lengthDigits)) return false;
  const auto length = textLength(std::string_view(current_.by(field.sender).bytes).substr(unitBegin_, lengthDigits));
  if (!length) {
    giveUp();
    return true;
  }
  if (!take(field.sender, lengthDigits + *length)) return false;
  store(field, unitBegin_, 0);
  return true;
}

void Assembler::store(const Field& field, std::size_t begin, std::int64_t number) {
  current_.fields.push_back({&field, begin, current_.by(field.sender).bytes.size() - begin, number});
  if (protocol::isNumber(field.type)) facts_[field.name] = number;
  const auto& fields = current_.command->fields;
  current_.complete = ++nextField_ == fields.size() || endsCommand(field.type, number);
  if (!current_.complete) unitBegin_ = current_.by(fields[nextField_].sender).bytes.size();
}

void Assembler::giveUp() { lost_ = true; }

void Assembler::close() {
  if (current_.pieces.empty()) return;
  const std::uint32_t connection = current_.connection;
  for (const Sender sender : {Sender::client, Sender::head}) {
    offsets_[static_cast<std::size_t>(sender)] += current_.by(sender).bytes.size();
  }
  over_.push_back(std::exchange(current_, {}));
  current_.connection = connection;
  for (const Sender sender : {Sender::client, Sender::head}) current_.by(sender).offset = offsets_[static_cast<std::size_t>(sender)];
  nextField_ = 0;
  unitBegin_ = 0;
}

}  // namespace fringix::recording
