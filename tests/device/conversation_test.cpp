// The conversations, played with the library: what it sends, what it makes of the answers; and the rows of the other tests held against
// the table of commands.
#include <gtest/gtest.h>

#include <set>

#include "device/command_table.h"
#include "device/conversation_calls.h"
#include "fringix/fringix.h"
#include "protocol/conversations.h"

namespace fringix::test {

namespace {

using protocol::Command;
using protocol::CommandTable;
using protocol::Example;
using protocol::Exchange;
using protocol::Facts;
using protocol::Field;
using protocol::Sender;
using protocol::Type;

const CommandTable& table() { return CommandTable::ofTheProtocol(); }

constexpr const char* versionCommand = "20MSG_SLGetProtocolVersion";
const std::set<std::string> ofTheHandshake{"40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension"};

Facts exampleHead() { return {{"camera.width", 8}, {"camera.height", 4}, {"projector.width", 6}, {"projector.height", 5}}; }

// An exchange as bytes, and its values one by one.
struct Encoded {
  Script script;
  Bytes sent;
  Facts numbers;
  std::map<std::string, Bytes, std::less<>> others;
};

Encoded encode(const Exchange& exchange, Facts& facts) {
  Encoded encoded{{expect(text(exchange.command))}, text(exchange.command), {}, {}};
  const Command& command = table().find(exchange.command);
  for (std::size_t i = 0; i < exchange.values.size(); ++i) {
    const Field& field = command.fields[i];
    const Bytes bytes = protocol::encode(field, exchange.values[i], facts);
    const bool isSent = field.sender == Sender::client;
    encoded.script.push_back(isSent ? expect(bytes) : reply(bytes));
    if (isSent) encoded.sent += bytes;
    if (isNumber(field.type))
      encoded.numbers[field.name] = facts[field.name];
    else
      encoded.others[field.name] = field.type == Type::text ? bytes.substr(6) : bytes;
  }
  return encoded;
}

int resultOf(const Example& example) {
  if (example.result.empty()) return SLALL_OKAY;
  if (example.result == "SLSYSTEM_ERROR") return SLSYSTEM_ERROR;
  if (example.result == "SLBAD_PARAMETER") return SLBAD_PARAMETER;
  return std::stoi(example.result);
}

struct Case {
  const Command* command;
  const Example* example;
  std::string name;
};

void PrintTo(const Case& example, std::ostream* out) { *out << example.command->name << ", " << example.example->title; }

std::string nameOf(const Command& command, std::size_t example) {
  std::string name = "Of" + command.name + (example > 0 ? std::to_string(example + 1) : "");
  std::erase_if(name, [](char c) { return c == '_' || c == '='; });
  return name;
}

std::vector<Case> playable() {
  std::vector<Case> cases;
  for (const Command& command : table().commands()) {
    for (std::size_t i = 0; i < command.examples.size() && findCall(command.name) != nullptr; ++i) {
      cases.push_back({&command, &command.examples[i], nameOf(command, i)});
    }
  }
  return cases;
}

class ConversationTest : public testing::TestWithParam<Case> {
 protected:
  // What the library sends by itself before a command, and what it is answered.
  void addWhatComesBefore(const Exchange& exchange) {
    if (table().find(exchange.command).since > 0 && !versionAsked_) add(exampleOf(versionCommand));
    const ConversationCall* const call = findCall(exchange.command);
    ASSERT_NE(call, nullptr) << exchange.command;
    if (!call->asksFirst.empty()) add(exampleOf(call->asksFirst));
  }

  // The exchange, of the commands that its conversation needs, that is the command's own.
  const Exchange& exampleOf(std::string_view command) const {
    for (const Exchange& exchange : table().find(command).examples.front().exchanges) {
      if (exchange.command == command) return exchange;
    }
    throw std::runtime_error("no conversation about " + std::string(command));
  }

  Encoded& add(const Exchange& exchange) {
    versionAsked_ = versionAsked_ || exchange.command == versionCommand;
    Encoded& encoded = parts_.emplace_back(encode(exchange, facts_));
    script_ = script_ + encoded.script;
    sent_ += encoded.sent;
    return encoded;
  }

  Facts facts_ = exampleHead();
  bool versionAsked_ = false;
  std::deque<Encoded> parts_;
  Script script_;
  Bytes sent_;
};

TEST_P(ConversationTest, IsWhatTheLibrarySaysAndUnderstands) {
  const Example& example = *GetParam().example;
  std::vector<const Encoded*> called;
  for (const Exchange& exchange : example.exchanges) {
    ASSERT_NO_FATAL_FAILURE(addWhatComesBefore(exchange));
    called.push_back(&add(exchange));
  }
  OpenSession session(script_);
  for (std::size_t i = 0; i < called.size(); ++i) {
    const std::string& command = example.exchanges[i].command;
    SCOPED_TRACE(command);
    Call call(session, called[i]->numbers, called[i]->others);
    EXPECT_EQ(findCall(command)->run(call), command == GetParam().command->name ? resultOf(example) : SLALL_OKAY);
    call.expectOutputs();
  }
  EXPECT_EQ(readable(session.sent()), readable(sent_));
}

TEST(ConversationsTest, ASessionBeginsAndEndsWithTheirCommands) {
  Facts facts;
  Bytes sent = integer(3300);
  Script script{reply(integer(1)), expect(integer(3300))};
  for (const std::string& command : ofTheHandshake) {
    const Encoded part = encode(table().find(command).examples.front().exchanges.front(), facts);
    script = script + part.script;
    sent += part.sent;
  }
  ScriptedHead head(script);
  int handle = -1;
  ASSERT_EQ(SLDevAlloc("127.0.0.1", &handle), SLALL_OKAY);
  std::uint32_t size[4] = {};
  EXPECT_EQ(SLGetCameraSize(handle, &size[0], &size[1]), SLALL_OKAY);
  EXPECT_EQ(SLGetProjectorSize(handle, &size[2], &size[3]), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
  EXPECT_EQ(readable(head.received()), readable(sent + text(table().find("ByeBye=").name)));
  EXPECT_EQ(facts, (Facts{{"camera.width", size[0]},
                          {"camera.height", size[1]},
                          {"projector.width", size[2]},
                          {"projector.height", size[3]},
                          {"depth", 8},
                          {"status", 0}}));
}

TEST(ConversationsTest, EveryCommandIsCalledOrPartOfASessionItself) {
  for (const Command& command : table().commands()) {
    const bool bySession = ofTheHandshake.contains(command.name) || command.name == "ByeBye=";
    EXPECT_NE(findCall(command.name) != nullptr, bySession) << command.name;
    EXPECT_FALSE(command.examples.empty()) << command.name;
  }
}

// Takes the bytes of a row apart by the fields of its command.
class Dissection {
 public:
  explicit Dissection(Bytes sent, Bytes reply) : sent_(std::move(sent)), reply_(std::move(reply)) {}

  const Command& takeName() { return table().find(takeText(sent_)); }

  // Up to the end, or to the field that ends the command.
  void takeFields(const Command& command, Facts facts) {
    for (const Field& field : command.fields) {
      Bytes& bytes = field.sender == Sender::client ? sent_ : reply_;
      if (isNumber(field.type))
        facts[field.name] = protocol::decodeInteger(take(bytes, 4));
      else if (field.type == Type::text)
        takeText(bytes);
      else
        take(bytes, static_cast<std::size_t>(protocol::evaluate(field.size, facts)));
      if (field.type == Type::answer && facts[field.name] != 0) return;
    }
  }

  Bytes rest() const { return sent_ + reply_; }

 private:
  static Bytes take(Bytes& bytes, std::size_t count) {
    if (bytes.size() < count) throw std::runtime_error("bytes are missing");
    Bytes taken = bytes.substr(0, count);
    bytes.erase(0, count);
    return taken;
  }
  static Bytes takeText(Bytes& bytes) {
    const auto length = std::stoul(take(bytes, 6));
    return take(bytes, length);
  }

  Bytes sent_;
  Bytes reply_;
};

// Whether the row goes on with what another command has begun.
bool hasTwoParts(const CommandCase& row) { return row.name == "SaveData" || row.name == "LoadData"; }

void expectToFit(const CommandCase& row) {
  const Bytes status = row.statusWord == StatusWord::follows ? integer(0) : Bytes();
  const bool whole = hasTwoParts(row);
  Dissection bytes((whole ? row.before.sent : Bytes()) + row.sent, (whole ? row.before.reply : Bytes()) + row.reply + status);
  const Command& command = bytes.takeName();
  EXPECT_EQ(command.since, row.minimumVersion);
  const bool endsWithStatus = !command.fields.empty() && command.fields.back().type == Type::status;
  EXPECT_EQ(endsWithStatus, row.statusWord == StatusWord::follows);
  bytes.takeFields(command, exampleHead());
  EXPECT_EQ(readable(bytes.rest()), "");
}

TEST(ConversationsTest, TheRowsOfTheOtherTestsFitTheirFields) {
  for (const auto& family :
       {sessionCommands(), sequenceCommands(), projectionCommands(), pictureCommands(), settingsCommands(), dataCommands()}) {
    for (const CommandCase& row : family) {
      SCOPED_TRACE(row.name);
      EXPECT_NO_THROW(expectToFit(row));
    }
  }
}

TEST(ConversationsTest, EveryCommandHasARowInTheOtherTests) {
  std::set<std::string> tested{ofTheHandshake};
  tested.insert("ByeBye=");
  for (const auto& family :
       {sessionCommands(), sequenceCommands(), projectionCommands(), pictureCommands(), settingsCommands(), dataCommands()}) {
    for (const CommandCase& row : family) {
      for (const Bytes& sent : {row.before.sent, row.sent}) {
        if (sent.starts_with("    ")) tested.insert(sent.substr(6, std::stoul(sent.substr(0, 6))));
      }
    }
  }
  for (const Command& command : table().commands()) EXPECT_EQ(tested.count(command.name), 1U) << command.name;
}

TEST(ConversationsTest, WhatAHeadTellsMakesNoSizeTooLarge) {
  const Facts facts{{"side", 0x7FFFFFFF}, {"none", 0}, {"less", -1}};
  EXPECT_EQ(protocol::evaluate("side*2/side*3", facts), 6);
  for (const char* expression : {"side*side", "side*less*side", "side/none", "unknown", "-", "5x", "-9223372036854775808/less"}) {
    EXPECT_THROW(protocol::evaluate(expression, facts), std::runtime_error) << expression;
  }
  for (const char* size : {"less", "side"}) {
    Facts known = facts;
    EXPECT_THROW(protocol::encode({Sender::head, "picture", Type::picture, size}, {"picture", {}, {}}, known), std::runtime_error) << size;
  }
}

TEST(ConversationsTest, WhatIsNoTableIsRefused) {
  const std::string command = "command 1MSG_A\nsend a int first\nreply b int\nexample one\n";
  EXPECT_NO_THROW(CommandTable(command + "> 1MSG_A a=5\n< b~3\n"));
  for (const char* turn : {"> 1MSG_B a=5\n", "> 1MSG_A b=5\n", "> 1MSG_A a=5 b=6 c=7\n", "< b=5\n", "sends a=5\n", "send c number\n"}) {
    EXPECT_THROW(CommandTable(command + turn), std::runtime_error) << turn;
  }
  EXPECT_THROW(CommandTable("send a int\n"), std::runtime_error);
  for (const char* since : {"soon", "", "-", "9999999999999999999", "3300 or so"}) {
    EXPECT_THROW(CommandTable(std::string("command 1MSG_A\nsince ") + since + "\n"), std::runtime_error) << since;
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, ConversationTest, testing::ValuesIn(playable()),
                         [](const testing::TestParamInfo<Case>& test) { return test.param.name; });

}  // namespace

}  // namespace fringix::test
