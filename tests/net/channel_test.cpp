// The channel around the socket: what it is without one, its address and times, and its patience.
#include <gtest/gtest.h>

#include <chrono>

#include "net/command_channel.h"
#include "platform/clock.h"
#include "support/scripted_head.h"
#include "support/socket_options.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;

TEST(ChannelTest, WithoutASocketEveryTransferFails) {
  CommandChannel channel;
  std::int32_t value = 0;
  std::string received;
  char byte = 0;
  EXPECT_EQ(channel.SendString("100MSG_SLNOOP"), -1);
  EXPECT_EQ(channel.SendInt(1), -1);
  EXPECT_EQ(channel.SendBytes(&byte, 1), -1);
  EXPECT_EQ(channel.ReceiveInt(&value), -1);
  EXPECT_EQ(channel.ReceiveString(&received), -1);
  EXPECT_EQ(channel.ReceiveBytes(&byte, 1), -1);
  EXPECT_EQ(channel.peerAddress(), "");
  EXPECT_EQ(channel.lastSendTime(), 0);
}

TEST(ChannelTest, ASocketWithoutAHandleFails) {
  myTcpSocket socket;
  std::int32_t value = 0;
  std::string received;
  char byte = 0;
  EXPECT_EQ(socket.Connect("127.0.0.1"), -1);
  EXPECT_EQ(socket.ConnectWithTimeout("127.0.0.1", 1), -1);
  EXPECT_EQ(socket.SendString("x"), -1);
  EXPECT_EQ(socket.SendBytes(&byte, 0), -1);
  EXPECT_EQ(socket.ReceiveInt(&value), -1);
  EXPECT_EQ(socket.ReceiveString(&received), -1);
  EXPECT_EQ(socket.ReceiveBytes(&byte, 1), -1);
  EXPECT_EQ(socket.WaitReadable(0), -1);
  EXPECT_EQ(socket.setNonBlocking(true), -1);
}

// Lets a test look at what only derived classes may.
struct OpenSocket : myTcpSocket {
  using mySocket::localAddress_;
  using mySocket::port_;
  using mySocket::receiveTimeout_;
};

TEST(ChannelTest, ASocketSendsWithoutDelayAndHasTheCommandPort) {
  const platform::SocketLibrary library;
  OpenSocket socket;
  ASSERT_EQ(socket.Create(), 0);
  EXPECT_TRUE(hasNoDelay(socket.handle()));
  EXPECT_FALSE(hasKeepAlive(socket.handle()));
  EXPECT_EQ(socket.port_, 44330);
  EXPECT_EQ(socket.localAddress_, (platform::Ipv4Endpoint{0, 44330}));
  EXPECT_EQ(socket.receiveTimeout_, 0U);
  socket.enableKeepAlive();
  EXPECT_TRUE(hasKeepAlive(socket.handle()));
}

TEST(ChannelTest, AChannelKeepsItsConnectionAlive) {
  ScriptedHead head(Script{});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  EXPECT_TRUE(hasKeepAlive(channel.socket()->handle()));
}

TEST(ChannelTest, OnlyNamesMoveTheLastSendTime) {
  ScriptedHead head({reply(integer(5))});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  EXPECT_EQ(channel.peerAddress(), "127.0.0.1");
  std::int32_t value = 0;
  EXPECT_EQ(channel.SendInt(1), 0);
  EXPECT_EQ(channel.SendBytes("x", 1), 0);
  EXPECT_EQ(channel.ReceiveInt(&value), 0);
  EXPECT_EQ(channel.lastSendTime(), 0);
  const std::int64_t before = platform::secondsSinceEpoch();
  EXPECT_EQ(channel.SendString("name"), 0);
  EXPECT_GE(channel.lastSendTime(), before);
}

TEST(ChannelTest, ConnectingAgainStartsAnew) {
  ScriptedHead head(std::vector<Script>{{}, {}});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  ASSERT_EQ(channel.SendString("first"), 0);
  ASSERT_EQ(channel.Connect("127.0.1"), 0);  // the short form of the same address
  EXPECT_EQ(channel.peerAddress(), "127.0.1");
  EXPECT_EQ(channel.lastSendTime(), 0);
  EXPECT_EQ(channel.Connect("127.0.0.9"), -1);
}

TEST(ChannelTest, ASilentHeadFailsAReceiveAfterTheTimeout) {
  ScriptedHead head({reply("ab"), stall()});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  channel.socket()->setReceiveTimeout(1);
  std::int32_t value = 99;
  const auto start = Clock::now();
  EXPECT_EQ(channel.ReceiveInt(&value), -1) << "two of four bytes are not enough";
  const auto took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(990));
  EXPECT_LT(took, std::chrono::seconds(8));
  EXPECT_EQ(value, 99);
}

TEST(ChannelTest, WithoutATimeoutAReceiveWaits) {
  ScriptedHead head({expect(text("now")), reply(integer(7))});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  std::thread later([&] {
    platform::sleepFor(std::chrono::milliseconds(1500));
    channel.SendString("now");
  });
  std::int32_t value = 0;
  EXPECT_EQ(channel.ReceiveInt(&value), 0);
  EXPECT_EQ(value, 7);
  later.join();
}

TEST(ChannelTest, WaitReadableTellsReadableFromTimedOut) {
  ScriptedHead head({expect(text("now")), reply("x")});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  EXPECT_EQ(channel.socket()->WaitReadable(0), 0);
  EXPECT_EQ(channel.socket()->WaitReadable(1), 0);
  channel.SendString("now");
  EXPECT_EQ(channel.socket()->WaitReadable(10), 1);
}

TEST(ChannelTest, SendingToAHeadThatHasResetFails) {
  ScriptedHead head({reset()});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  head.received();  // by now the connection is reset
  std::int32_t value = 0;
  EXPECT_EQ(channel.ReceiveInt(&value), -1);
  EXPECT_EQ(channel.SendString("name"), -1);
  EXPECT_EQ(channel.SendInt(1), -1);
}

}  // namespace

}  // namespace fringix::test
