// The bytes of a connection taken apart into the commands that they are, by the table of the protocol's commands. Whatever client and head
// have said, every byte of it belongs to one of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/conversations.h"
#include "protocol/encoding.h"

namespace fringix::recording {

inline constexpr const char* greetingName = "greeting";  // what a connection begins with, told as a command

// Bytes that came together, or a trigger, which has none.
struct Piece {
  enum class From : std::uint8_t { client, head, trigger };
  From from;
  std::uint64_t time;
  std::size_t size;
};

// A field of the command, and where its bytes are in what its sender said.
struct FieldValue {
  const protocol::Field* field;
  std::size_t begin;
  std::size_t size;
  std::int64_t number;  // of a number
};

struct Said {
  std::string bytes;
  std::uint64_t offset = 0;  // of the first one in all that was said in the connection
};

struct RecordedCommand {
  std::uint32_t connection = 0;
  std::string name;  // empty: it could not be read, and what follows belongs to it
  const protocol::Command* command = nullptr;
  std::array<Said, 2> said;  // by client and head
  std::vector<FieldValue> fields;
  std::vector<Piece> pieces;
  bool complete = false;    // all that belongs to the command is there
  std::size_t surplus = 0;  // bytes that the head said behind that

  Said& by(protocol::Sender sender) { return said[static_cast<std::size_t>(sender)]; }
  const Said& by(protocol::Sender sender) const { return said[static_cast<std::size_t>(sender)]; }
  std::uint64_t begin() const { return pieces.empty() ? 0 : pieces.front().time; }
  std::uint64_t end() const { return pieces.empty() ? 0 : pieces.back().time; }
  std::string_view bytesOf(const FieldValue& value) const {
    return std::string_view(by(value.field->sender).bytes).substr(value.begin, value.size);
  }
};

const protocol::Command& greeting();

// The number of bytes that a name, bytes or a picture has; nothing for what no size can be.
std::optional<std::size_t> sizeOf(const protocol::Field& field, const protocol::Facts& facts);

// The length that the 6 characters before a text tell; nothing when they tell none.
std::optional<std::size_t> textLength(std::string_view digits);

// Whether a number ends its command, whatever fields come behind.
bool endsCommand(protocol::Type type, std::int64_t number);

// Whether a head's reply to it never changes: clients ask it when they need it, wherever that is.
bool hasConstantReply(std::string_view command);

class Assembler {
 public:
  explicit Assembler(std::uint32_t connection);

  // In the order in which it happened.
  void say(protocol::Sender sender, std::uint64_t time, std::string_view bytes);
  void addTrigger(std::uint64_t time) { current_.pieces.push_back({Piece::From::trigger, time, 0}); }

  // A command that is over: the next one has begun.
  std::optional<RecordedCommand> next();

  // Nothing more is said: what has come is over, complete or not. Then next() gives the rest.
  void end();

 private:
  struct Chunk {
    std::uint64_t time;
    std::string bytes;
    std::size_t taken = 0;
  };

  bool advance();
  bool advanceField();
  bool take(protocol::Sender sender, std::size_t count);
  void takeAll(protocol::Sender sender);
  void addPiece(protocol::Sender sender, std::uint64_t time, std::size_t size);
  std::size_t earlyBytes() const;
  bool readName();
  bool readText(const protocol::Field& field);
  void store(const protocol::Field& field, std::size_t begin, std::int64_t number);
  void giveUp();
  void begin();
  void close();

  std::array<std::deque<Chunk>, 2> waiting_;
  std::array<std::uint64_t, 2> offsets_{};
  RecordedCommand current_;
  protocol::Facts facts_;
  std::size_t nextField_ = 0;
  std::size_t unitBegin_ = 0;  // where the field that is being read begins in what its sender says
  bool lost_ = false;          // nobody knows any more what the bytes are
  std::deque<RecordedCommand> over_;
};

}  // namespace fringix::recording
