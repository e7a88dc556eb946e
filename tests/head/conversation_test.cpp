// The conversations, played with the simulated head, and its commands held against their table.
#include <gtest/gtest.h>

#include <map>

#include "head/commands/commands.h"
#include "protocol/player.h"
#include "running_head.h"

namespace fringix::head {
namespace {

using protocol::CommandTable;
using protocol::Example;

const CommandTable& table() { return CommandTable::ofTheProtocol(); }

HeadSettings exampleHead() {
  HeadSettings settings = smallHead();
  settings.serial = 70123;
  settings.camera = {8, 4};
  settings.projector = {6, 5};
  return settings;
}

class ClientConnection : public protocol::Connection {
 public:
  explicit ClientConnection(RawClient& client) : client_(client) {}
  void send(const std::string& bytes) override { client_.sendRaw(bytes); }
  std::string receive(std::size_t count) override {
    const auto bytes = client_.receiveBytes(count);
    return {bytes.begin(), bytes.end()};
  }

 private:
  RawClient& client_;
};

class ConversationTest : public RunningHead {
 protected:
  ConversationTest() : RunningHead(exampleHead()) { play(table().find("40MSG_SLGetMaxImageSize").examples.front()); }

  void play(const Example& example) {
    ClientConnection connection(*client);
    const protocol::Played played = protocol::play(table(), example, connection, facts, true);
    for (const auto& difference : played.differences) {
      ADD_FAILURE() << difference.command << ": " << difference.field << ", at byte " << difference.offset << " of the reply, is "
                    << difference.found << " and should be " << difference.expected;
    }
    EXPECT_TRUE(played.inStep);
  }

  protocol::Facts facts;
};

TEST_F(ConversationTest, IsWhatTheHeadUnderstandsAndSays) {
  play(table().find("45MSG_SLGetProjDimension").examples.front());
  for (const auto& command : table().commands()) {
    for (const Example& example : command.examples) {
      SCOPED_TRACE(command.name + ", " + example.title);
      ASSERT_NO_THROW(play(example));
      EXPECT_EQ(ask("21MSG_SLGetSerial"), 70123) << "head and client are out of step";
    }
  }
}

TEST(ConversationsTest, TheHeadsCommandsAreThoseOfTheTable) {
  std::map<std::string, std::int32_t> commands;
  for (const CommandFamily& family : commandFamilies()) {
    for (const Command& command : family) commands.emplace(command.name, command.since);
  }
  std::map<std::string, std::int32_t> expected;
  for (const auto& command : table().commands()) expected.emplace(command.name, command.since);
  EXPECT_EQ(commands, expected);
}

}  // namespace
}  // namespace fringix::head
