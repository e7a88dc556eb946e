// Answers one client as a head once did, and tells where the client says something else than the one of the record.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "head/replay/survey.h"
#include "head/wire/wire.h"

namespace fringix::head {

struct Replay {
  std::string file;
  bool atOnce = false;  // else replies take as long as they once did
};

class Player {
 public:
  using Tell = std::function<void(const std::string& difference)>;
  using Trigger = std::function<void()>;

  Player(const Replay& replay, Wire& wire, Tell tell, Trigger trigger);

  // What a client hears before it says anything.
  void greet(const RecordedConnection& connection);
  // The rest, from the client's `version` on, up to the recorded end. Gives whether the head reset the connection then. Throws
  // Disconnected when the client leaves, or where it says what the record has no answer to, which was told then.
  bool play(const RecordedConnection& connection, std::int32_t version);
  // All of a connection in which the client said nothing.
  bool playRefusal(const RecordedConnection& connection);

 private:
  using Clock = std::chrono::steady_clock;

  bool playToTheEnd(recording::ConversationReader& reader);
  void playCommand(const recording::RecordedCommand& command);
  void playPieces(const recording::RecordedCommand& command);
  bool meetName(const recording::RecordedCommand& command);
  void answerConstant(const recording::RecordedCommand& command);
  void readTurn(const recording::RecordedCommand& command, std::size_t begin, std::size_t end);
  void readField(const recording::RecordedCommand& command, const recording::FieldValue& value);
  void compareNumber(const recording::RecordedCommand& command, const recording::FieldValue& value);
  std::string readBytes(std::size_t count);
  std::string readText();
  void readRaw(const recording::RecordedCommand& command, std::size_t begin, std::size_t count);
  void answer(const recording::RecordedCommand& command, std::size_t begin, const recording::Piece& piece);
  void checkReply(const recording::RecordedCommand& command, std::size_t begin, std::size_t end);
  bool end(const recording::Record& record);
  void awaitNothing(const char* why);
  void waitUntil(std::uint64_t time, bool always = false);
  void reached(std::uint64_t time);
  [[noreturn]] void giveUp(const std::string& difference);
  void tellAt(const recording::RecordedCommand& command, std::size_t byte, const std::string& what);
  std::string place(const recording::RecordedCommand& command) const;

  const Replay& replay_;
  Wire& wire_;
  const Tell tell_;
  const Trigger trigger_;
  const RecordedConnection* connection_ = nullptr;
  protocol::Facts facts_;
  std::optional<std::string> name_;  // that the client has said, and that is not answered yet
  std::size_t index_ = 0;            // of the command in the connection
  bool gaveUp_ = false;
  std::size_t readUpTo_ = 0;        // in what the client of the record said with the command
  std::uint64_t recordedTime_ = 0;  // of what happened last, then and now
  Clock::time_point time_ = Clock::now();
};

}  // namespace fringix::head
