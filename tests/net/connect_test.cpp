// Connecting with a time limit.
#include <gtest/gtest.h>

#include <chrono>

#include "net/my_tcp_socket.h"
#include "support/scripted_head.h"

namespace fringix::test {

namespace {

class ConnectTest : public testing::Test {
 protected:
  platform::SocketLibrary library_;
  myTcpSocket socket_;
};

TEST_F(ConnectTest, ReachesAHeadAndBlocksAgainAfterwards) {
  ScriptedHead head({expect(text("go")), reply(integer(3))});
  ASSERT_EQ(socket_.Create(), 0);
  ASSERT_EQ(socket_.ConnectWithTimeout("127.0.0.1", 5), 0);
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    socket_.SendString("go");
  });
  std::int32_t value = 0;
  EXPECT_EQ(socket_.ReceiveInt(&value), 0) << "a socket that does not block would have failed at once";
  EXPECT_EQ(value, 3);
  later.join();
  socket_.Create();  // lets the head see the end of the connection
}

TEST_F(ConnectTest, FailsWhereNothingListens) {
  ASSERT_EQ(socket_.Create(), 0);
  EXPECT_EQ(socket_.ConnectWithTimeout("127.0.0.9", 2), -1);
}

// What fits on the stack is sent from there, and one byte more from elsewhere.
TEST_F(ConnectTest, SendsTextsOfEveryLengthWhole) {
  const std::size_t border = 1024 - 6;  // behind the field for the length
  Script script;
  for (std::size_t length = border - 2; length <= border + 2; ++length) script.push_back(expect(text(std::string(length, 'x'))));
  ScriptedHead head(script);
  ASSERT_EQ(socket_.Create(), 0);
  ASSERT_EQ(socket_.Connect("127.0.0.1"), 0);
  for (std::size_t length = border - 2; length <= border + 2; ++length)
    EXPECT_EQ(socket_.SendString(std::string(length, 'x')), 0) << length;
  socket_.Create();  // lets the head see the end of the connection
}

TEST_F(ConnectTest, FailsWhereNoConnectionLeads) {
  ASSERT_EQ(socket_.Create(), 0);
  EXPECT_EQ(socket_.ConnectWithTimeout("224.0.0.1", 2), -1) << "a group of hosts takes none";
}

TEST_F(ConnectTest, ConnectsASocketThatDoesNotBlockAnyway) {
  ScriptedHead head({reply(integer(3))});
  ASSERT_EQ(socket_.Create(), 0);
  ASSERT_EQ(socket_.setNonBlocking(true), 0);
  ASSERT_EQ(socket_.ConnectWithTimeout("127.0.0.1", 5), 0);
  std::int32_t value = 0;
  EXPECT_EQ(socket_.ReceiveInt(&value), 0);
  EXPECT_EQ(value, 3);
  socket_.Create();  // lets the head see the end of the connection
}

TEST_F(ConnectTest, GivesUpAtTheLimit) {
  // A listener that never accepts takes few connections; those behind them stay unanswered.
  platform::Socket listener = platform::Socket::openStream();
  listener.setReuseAddress(true);
  ASSERT_TRUE(listener.bind({platform::parseIpv4("127.0.0.1"), 44330}));
  ASSERT_TRUE(listener.listen(0));
  std::vector<myTcpSocket> waiting(8);
  bool refused = false;
  for (myTcpSocket& socket : waiting) {
    ASSERT_EQ(socket.Create(), 0);
    const auto start = std::chrono::steady_clock::now();
    if (socket.ConnectWithTimeout("127.0.0.1", 1) == 0) continue;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    refused = true;
    break;
  }
  EXPECT_TRUE(refused);
}

TEST_F(ConnectTest, CreatingAgainClosesTheOldSocket) {
  ScriptedHead head(Script{});
  ASSERT_EQ(socket_.Create(), 0);
  ASSERT_EQ(socket_.Connect("127.0.0.1"), 0);
  ASSERT_EQ(socket_.Create(), 0);
  EXPECT_EQ(head.received(), Bytes()) << "the head sees the end of the connection";
}

}  // namespace

}  // namespace fringix::test
