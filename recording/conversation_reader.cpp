#include "recording/conversation_reader.h"

#include <utility>

namespace fringix::recording {

std::optional<Happening> ConversationReader::next() {
  while (ready_.empty() && !atEnd_) {
    if (std::optional<Record> record = reader_.next())
      take(std::move(*record));
    else {
      while (!open_.empty()) close(open_.begin()->first);
      atEnd_ = true;
    }
  }
  if (ready_.empty()) return {};
  Happening happening = std::move(ready_.front());
  ready_.pop_front();
  return happening;
}

void ConversationReader::take(Record record) {
  if (record.kind == Kind::fromClient) return say(record, protocol::Sender::client);
  if (record.kind == Kind::fromHead) return say(record, protocol::Sender::head);
  if (record.kind == Kind::opened) alive_.insert(lastActive_ = record.connection);
  if (record.kind == Kind::closedByClient || record.kind == Kind::closedByHead) forget(record.connection);
  if (selected_ != 0 && record.connection != 0 && record.connection != selected_) return;
  if (record.kind == Kind::opened) open_.try_emplace(record.connection, record.connection);
  const auto active = open_.find(lastActive_);
  if (record.kind == Kind::trigger && active != open_.end()) active->second.addTrigger(record.time);
  ready_.push_back({std::move(record), {}});
}

void ConversationReader::forget(std::uint32_t connection) {
  close(connection);
  alive_.erase(connection);
  if (lastActive_ == connection) lastActive_ = alive_.empty() ? 0 : *alive_.rbegin();
}

void ConversationReader::say(const Record& record, protocol::Sender sender) {
  const auto assembler = open_.find(record.connection);
  if (alive_.contains(record.connection)) lastActive_ = record.connection;
  if (assembler == open_.end()) return;  // of a connection that nobody has opened, or another one
  assembler->second.say(sender, record.time, record.payload);
  collect(assembler->second);
}

void ConversationReader::close(std::uint32_t connection) {
  const auto assembler = open_.find(connection);
  if (assembler == open_.end()) return;
  assembler->second.end();
  collect(assembler->second);
  open_.erase(assembler);
}

void ConversationReader::collect(Assembler& assembler) {
  while (std::optional<RecordedCommand> command = assembler.next()) ready_.push_back({{}, std::move(command)});
}

}  // namespace fringix::recording
