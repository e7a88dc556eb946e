// The owning socket type: ownership, waits and ends of connections.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <utility>

#include "platform/datagram.h"
#include "platform/socket.h"
#include "support/eventually.h"
#include "support/socket_options.h"

namespace fringix::platform {

namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t loopback = 0x7F000001;

struct Pair {
  Socket client;
  Socket server;
};

Pair connectedPair() {
  Socket listener = Socket::openStream();
  EXPECT_TRUE(listener.bind({loopback, 0}));
  EXPECT_TRUE(listener.listen(1));
  Pair pair{Socket::openStream(), Socket()};
  EXPECT_TRUE(pair.client.connect(listener.localEndpoint()));
  Ipv4Endpoint peer;
  pair.server = listener.accept(&peer);
  EXPECT_EQ(peer, pair.client.localEndpoint());
  return pair;
}

class SocketTest : public testing::Test {
  SocketLibrary library_;
};

TEST_F(SocketTest, MovingHandsTheHandleOn) {
  Socket first = Socket::openStream();
  ASSERT_TRUE(first.valid());
  const Socket::Handle handle = first.handle();
  Socket second(std::move(first));
  EXPECT_EQ(second.handle(), handle);
  EXPECT_FALSE(first.valid());
  first = std::move(second);
  EXPECT_EQ(first.handle(), handle);
  Socket& same = first;
  first = std::move(same);
  EXPECT_EQ(first.handle(), handle);
  first.close();
  first.close();
  EXPECT_FALSE(first.valid());
}

TEST_F(SocketTest, AssigningClosesWhatWasHeld) {
  Pair pair = connectedPair();
  pair.client = Socket();
  char byte = 0;
  EXPECT_EQ(pair.server.receive(&byte, 1), 0) << "the peer has closed";
}

TEST_F(SocketTest, WaitsTellReadableFromTimedOut) {
  Pair pair = connectedPair();
  EXPECT_EQ(pair.server.waitReadable(milliseconds(0)), Readiness::timedOut);
  EXPECT_EQ(pair.server.waitWritable(milliseconds(1000)), Readiness::ready);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(pair.server.waitReadable(milliseconds(150)), Readiness::timedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(140));
  EXPECT_EQ(pair.client.send("x", 1), 1);
  EXPECT_EQ(pair.server.waitReadable(waitForever), Readiness::ready);
  EXPECT_EQ(Socket().waitReadable(milliseconds(0)), Readiness::failed);
}

TEST_F(SocketTest, AClosedPeerReadsAsZeroAndAResetOneGivesNothing) {
  Pair closed = connectedPair();
  closed.client.close();
  char byte = 0;
  EXPECT_EQ(closed.server.receive(&byte, 1), 0);

  Pair wasReset = connectedPair();
  ASSERT_TRUE(wasReset.client.setResetOnClose());
  wasReset.client.close();
  EXPECT_EQ(wasReset.server.waitReadable(milliseconds(5000)), Readiness::ready);
  EXPECT_LE(wasReset.server.receive(&byte, 1), 0);
  EXPECT_EQ(wasReset.server.send(&byte, 1), -1) << "and no signal ends the process";
}

TEST_F(SocketTest, ShutdownEndsTheConnectionForThePeer) {
  Pair pair = connectedPair();
  EXPECT_TRUE(pair.client.shutdown());
  char byte = 0;
  EXPECT_EQ(pair.server.waitReadable(milliseconds(5000)), Readiness::ready);
  EXPECT_EQ(pair.server.receive(&byte, 1), 0);
}

TEST_F(SocketTest, ConnectingFailsWhereNothingListens) {
  Socket unused = Socket::openStream();
  ASSERT_TRUE(unused.bind({loopback, 0}));
  EXPECT_FALSE(Socket::openStream().connect(unused.localEndpoint()));
}

TEST_F(SocketTest, ANonBlockingConnectIsUnderWayAndThenWritable) {
  Socket listener = Socket::openStream();
  ASSERT_TRUE(listener.bind({loopback, 0}) && listener.listen(1));
  Socket client = Socket::openStream();
  ASSERT_TRUE(client.setNonBlocking(true));
  EXPECT_TRUE(client.connect(listener.localEndpoint()) || Socket::connectInProgress());
  EXPECT_EQ(client.waitWritable(milliseconds(5000)), Readiness::ready);
}

TEST_F(SocketTest, DatagramsTellTheirSender) {
  Socket receiver = Socket::openDatagram();
  Socket sender = Socket::openDatagram();
  ASSERT_TRUE(receiver.bind({loopback, 0}) && sender.bind({loopback, 0}));
  EXPECT_EQ(sender.sendTo("text", 4, receiver.localEndpoint()), 4);
  ASSERT_EQ(receiver.waitReadable(milliseconds(5000)), Readiness::ready);
  std::array<char, 8> buffer{};
  Ipv4Endpoint origin;
  EXPECT_EQ(receiver.receiveFrom(buffer.data(), buffer.size(), &origin), 4);
  EXPECT_EQ(std::string(buffer.data()), "text");
  EXPECT_EQ(origin, sender.localEndpoint());
}

TEST_F(SocketTest, ADatagramLeavesFromTheChosenAddress) {
  Socket receiver = Socket::openDatagram();
  ASSERT_TRUE(receiver.bind({loopback, 0}));
  std::array<char, 8> buffer{};
  for (const std::uint32_t from : {loopback, loopback + 1, loopback + 0x010203}) {
    EXPECT_TRUE(sendDatagram(from, receiver.localEndpoint(), "text", 4));
    ASSERT_EQ(receiver.waitReadable(milliseconds(5000)), Readiness::ready);
    Ipv4Endpoint origin;
    EXPECT_EQ(receiver.receiveFrom(buffer.data(), buffer.size(), &origin), 4);
    EXPECT_EQ(std::string(buffer.data()), "text");
    EXPECT_EQ(formatIpv4(origin.address), formatIpv4(from));
  }
  EXPECT_FALSE(sendDatagram(0xC0000201, receiver.localEndpoint(), "text", 4)) << "not an address of this machine";
}

TEST_F(SocketTest, ASendWithoutRoomTellsSoAndThatBytesAreUnconfirmed) {
  Pair pair = connectedPair();
  ASSERT_TRUE(pair.client.setNonBlocking(true));
  const std::string bytes(std::size_t{1} << 20, 'b');
  bool hadNoRoom = false;
  do {
    while (pair.client.send(bytes.data(), bytes.size()) > 0) {
    }
    hadNoRoom = Socket::sendHadNoRoom();
  } while (hadNoRoom && pair.client.waitWritable(milliseconds(300)) == Readiness::ready);
  EXPECT_TRUE(hadNoRoom);
  EXPECT_EQ(pair.client.hasUnconfirmed(), test::unconfirmedBytesAreTold());
  pair.server.setResetOnClose();
  pair.server.close();
  EXPECT_TRUE(test::eventually([&] { return pair.client.send(bytes.data(), 1) < 0 && !Socket::sendHadNoRoom(); }));
}

TEST_F(SocketTest, WhatThePeerHasIsConfirmed) {
  Pair pair = connectedPair();
  EXPECT_FALSE(pair.client.hasUnconfirmed());
  EXPECT_EQ(pair.client.send("x", 1), 1);
  EXPECT_TRUE(test::eventually([&] { return !pair.client.hasUnconfirmed(); })) << "also when nobody reads it";
  EXPECT_FALSE(Socket().hasUnconfirmed());
}

TEST_F(SocketTest, ProbesCanBeHadAtTimesOfOurOwn) {
  Pair pair = connectedPair();
  EXPECT_TRUE(pair.client.setKeepAlive({std::chrono::seconds(10), std::chrono::seconds(1), 10}));
  EXPECT_FALSE(Socket().setKeepAlive({std::chrono::seconds(10), std::chrono::seconds(1), 10}));
}

TEST_F(SocketTest, ADatagramThatCannotBeSentOrReadTellsSo) {
  Ipv4Endpoint origin{1, 2};
  char byte = 0;
  EXPECT_EQ(Socket().sendTo("x", 1, {loopback, 9}), -1);
  EXPECT_EQ(Socket().receiveFrom(&byte, 1, &origin), -1);
  EXPECT_EQ(origin, (Ipv4Endpoint{1, 2})) << "no sender";
}

TEST_F(SocketTest, AddressTextsAreReadAsTheSystemReadsThem) {
  EXPECT_EQ(parseIpv4("192.168.0.10"), 0xC0A8000AU);
  EXPECT_EQ(parseIpv4("127.0.9"), 0x7F000009U);
  EXPECT_EQ(parseIpv4("no address"), 0xFFFFFFFFU);
  EXPECT_EQ(formatIpv4(0xC0A8000A), "192.168.0.10");
  EXPECT_EQ(formatIpv4(0), "0.0.0.0");
}

}  // namespace

}  // namespace fringix::platform
