// The conversations, played with the library: what it sends, what it makes of the answers; and the rows of the other tests held against
// the table of commands.
#include <gtest/gtest.h>

#include <set>

#include "device/command_table.h"
#include "device/conversation_calls.h"
#include "device/encoded_conversation.h"
#include "device/open_session.h"
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

const std::set<std::string> ofTheHandshake{"40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension"};

Facts exampleHead() { return {{"camera.width", 8}, {"camera.height", 4}, {"projector.width", 6}, {"projector.height", 5}}; }

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

class ConversationTest : public testing::TestWithParam<Case> {};

Script scriptOf(const EncodedConversation& conversation) {
  Script script;
  for (const EncodedExchange& exchange : conversation.exchanges) {
    script.push_back(expect(text(exchange.command->name)));
    for (const EncodedField& field : exchange.fields) {
      script.push_back(field.field->sender == Sender::client ? expect(field.bytes) : reply(field.bytes));
    }
  }
  return script;
}

TEST_P(ConversationTest, IsWhatTheLibrarySaysAndUnderstands) {
  const Example& example = *GetParam().example;
  const EncodedConversation conversation = encode(example, exampleHead());
  OpenSession session(scriptOf(conversation));
  Bytes sent;
  for (const EncodedExchange& exchange : conversation.exchanges) {
    sent += exchange.sent();
    if (!exchange.called) continue;
    SCOPED_TRACE(exchange.command->name);
    Call call(session.handle(), exchange.numbers, exchange.others);
    EXPECT_EQ(findCall(exchange.command->name)->run(call), exchange.command == GetParam().command ? resultOf(example) : SLALL_OKAY);
    call.expectOutputs();
  }
  EXPECT_EQ(readable(session.sent()), readable(sent));
}

TEST(ConversationsTest, ASessionBeginsAndEndsWithTheirCommands) {
  Facts facts;
  Bytes sent = integer(3300);
  Script script{reply(integer(1)), expect(integer(3300))};
  for (const std::string& command : ofTheHandshake) {
    const EncodedConversation part{{encode(table().find(command).examples.front().exchanges.front(), facts)}};
    script = script + scriptOf(part);
    sent += part.exchanges[0].sent();
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
