#include "device/encoded_conversation.h"

#include <stdexcept>
#include <utility>

#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using protocol::CommandTable;
using protocol::Exchange;
using protocol::Facts;
using protocol::Field;
using protocol::Type;

constexpr const char* versionCommand = "20MSG_SLGetProtocolVersion";

// The exchange, of the commands that its conversation needs, that is the command's own.
const Exchange& exampleOf(std::string_view command) {
  for (const Exchange& exchange : CommandTable::ofTheProtocol().find(command).examples.front().exchanges) {
    if (exchange.command == command) return exchange;
  }
  throw std::runtime_error("no conversation about " + std::string(command));
}

class Encoder {
 public:
  explicit Encoder(Facts facts) : facts_(std::move(facts)) {}

  void addCalled(const Exchange& exchange) {
    const ConversationCall* const call = findCall(exchange.command);
    if (call == nullptr) throw std::runtime_error("nothing calls " + exchange.command);
    if (CommandTable::ofTheProtocol().find(exchange.command).since > 0 && !versionAsked_) add(exampleOf(versionCommand), false);
    if (!call->asksFirst.empty()) add(exampleOf(call->asksFirst), false);
    add(exchange, true);
  }

  EncodedConversation conversation;

 private:
  void add(const Exchange& exchange, bool called) {
    versionAsked_ = versionAsked_ || exchange.command == versionCommand;
    conversation.exchanges.push_back(encode(exchange, facts_));
    conversation.exchanges.back().called = called;
  }

  Facts facts_;
  bool versionAsked_ = false;
};

}  // namespace

Bytes EncodedExchange::sent() const {
  Bytes sent = text(command->name);
  for (const EncodedField& field : fields) {
    if (field.field->sender == protocol::Sender::client) sent += field.bytes;
  }
  return sent;
}

EncodedExchange encode(const Exchange& exchange, Facts& facts) {
  EncodedExchange encoded{&CommandTable::ofTheProtocol().find(exchange.command), {}, {}, {}};
  for (std::size_t i = 0; i < exchange.values.size(); ++i) {
    const Field& field = encoded.command->fields[i];
    const Bytes bytes = protocol::encode(field, exchange.values[i], facts);
    encoded.fields.push_back({&field, bytes});
    if (isNumber(field.type))
      encoded.numbers[field.name] = facts[field.name];
    else
      encoded.others[field.name] = field.type == Type::text ? bytes.substr(6) : bytes;
  }
  return encoded;
}

EncodedConversation encode(const protocol::Example& example, Facts facts) {
  Encoder encoder(std::move(facts));
  for (const Exchange& exchange : example.exchanges) encoder.addCalled(exchange);
  return std::move(encoder.conversation);
}

int resultOf(const protocol::Example& example) {
  if (example.result.empty()) return SLALL_OKAY;
  if (example.result == "SLSYSTEM_ERROR") return SLSYSTEM_ERROR;
  if (example.result == "SLBAD_PARAMETER") return SLBAD_PARAMETER;
  return std::stoi(example.result);
}

}  // namespace fringix::test
