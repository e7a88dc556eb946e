#include "fuzz/conversation_turns.h"

#include "protocol/encoding.h"

namespace fringix::fuzz {

namespace {

using protocol::CommandTable;

ConversationTurn encode(const protocol::Exchange& exchange, protocol::Facts& facts) {
  const protocol::Command& command = CommandTable::ofTheProtocol().find(exchange.command);
  ConversationTurn turn{command.name, command.function, {}, {}};
  for (std::size_t i = 0; i < exchange.values.size(); ++i) {
    const protocol::Field& field = command.fields[i];
    (field.sender == protocol::Sender::client ? turn.sent : turn.answered) += protocol::encode(field, exchange.values[i], facts);
  }
  return turn;
}

}  // namespace

std::vector<Conversation> conversations() {
  std::vector<Conversation> all;
  for (const protocol::Command& command : CommandTable::ofTheProtocol().commands()) {
    for (const protocol::Example& example : command.examples) {
      protocol::Facts facts{{"camera.width", 8}, {"camera.height", 4}, {"projector.width", 6}, {"projector.height", 5}};
      Conversation& conversation = all.emplace_back();
      for (const protocol::Exchange& exchange : example.exchanges) conversation.push_back(encode(exchange, facts));
    }
  }
  return all;
}

}  // namespace fringix::fuzz
