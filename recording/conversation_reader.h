// What happened, in a recording: commands, and what lies between them.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "recording/commands.h"
#include "recording/reader.h"

namespace fringix::recording {

// A command, or a record that is no part of one. Commands come when they are over.
struct Happening {
  Record record;  // without a command
  std::optional<RecordedCommand> command;
};

class ConversationReader {
 public:
  explicit ConversationReader(const std::string& path) : reader_(path) {}

  // Only this connection's commands, and what belongs to no connection.
  void selectConnection(std::uint32_t connection) { selected_ = connection; }

  // As Reader::next().
  std::optional<Happening> next();

  const Reader& file() const { return reader_; }

 private:
  void take(Record record);
  void say(const Record& record, protocol::Sender sender);
  void forget(std::uint32_t connection);
  void close(std::uint32_t connection);
  void collect(Assembler& assembler);

  Reader reader_;
  std::uint32_t selected_ = 0;  // 0: all
  std::map<std::uint32_t, Assembler> open_;
  std::set<std::uint32_t> alive_;  // connections, those that are not selected, too
  std::uint32_t lastActive_ = 0;   // of them: where a trigger belongs
  std::deque<Happening> ready_;
  bool atEnd_ = false;
};

}  // namespace fringix::recording
