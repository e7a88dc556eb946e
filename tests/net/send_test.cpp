// Sending to a head that takes nothing, little, or nothing any more.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "net/command_channel.h"
#include "platform/clock.h"
#include "support/scripted_head.h"
#include "support/socket_options.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// More than any system keeps for a peer that does not read.
const Bytes upload(std::size_t{64} << 20, 'u');

constexpr milliseconds shortPause{700};

// A listener whose connection the test reads, or does not.
class SendTest : public testing::Test {
 protected:
  SendTest() {
    listener_.setReuseAddress(true);
    EXPECT_TRUE(listener_.bind({platform::parseIpv4("127.0.0.1"), commandPort}) && listener_.listen(1));
    EXPECT_EQ(channel_.Connect("127.0.0.1"), 0);
    channel_.socket()->setSendPause(shortPause);
    head_ = listener_.accept();
  }

  // Where not everything is sent, the head must not wait for the rest.
  int send(const Bytes& bytes) {
    const int result = channel_.SendBytes(bytes.data(), bytes.size());
    if (result != 0) head_.shutdown();
    return result;
  }

  platform::SocketLibrary library_;
  platform::Socket listener_ = platform::Socket::openStream();
  CommandChannel channel_;
  platform::Socket head_;
};

TEST_F(SendTest, FailsWhenNothingIsTakenForTheLongestPause) {
  const auto start = Clock::now();
  EXPECT_EQ(channel_.SendBytes(upload.data(), upload.size()), -1);
  const auto took = Clock::now() - start;
  EXPECT_GE(took, shortPause);
  EXPECT_LT(took, shortPause + std::chrono::seconds(8));
}

TEST_F(SendTest, APauseBeginsAnewWithWhatIsTaken) {
  constexpr int pieces = 6;
  const Bytes some = upload.substr(0, std::size_t{24} << 20);
  std::thread reader([&] {
    std::vector<char> buffer(std::size_t{4} << 20);
    for (std::size_t left = some.size(); left > 0;) {
      platform::sleepFor(shortPause / 2);
      // A piece after each pause, and so much in all that the upload takes longer than the longest pause.
      for (std::size_t piece = some.size() / pieces; piece > 0 && left > 0;) {
        if (head_.waitReadable(milliseconds(100)) != platform::Readiness::ready) break;
        const auto count = head_.receive(buffer.data(), std::min(piece, buffer.size()));
        if (count <= 0) return;
        piece -= static_cast<std::size_t>(count);
        left -= static_cast<std::size_t>(count);
      }
    }
  });
  const auto start = Clock::now();
  EXPECT_EQ(send(some), 0);
  EXPECT_GT(Clock::now() - start, shortPause) << "the head has not been slow";
  reader.join();
}

TEST_F(SendTest, AHeadThatGoesEndsTheWaitAtOnce) {
  channel_.socket()->setSendPause(std::chrono::seconds(60));
  std::thread leaving([&] {
    platform::sleepFor(milliseconds(300));
    head_.setResetOnClose();
    head_.close();
  });
  const auto start = Clock::now();
  EXPECT_EQ(channel_.SendBytes(upload.data(), upload.size()), -1);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
  leaving.join();
}

TEST_F(SendTest, AHeadThatReadsGetsEverything) {
  channel_.socket()->setSendPause(std::chrono::seconds(60));  // a busy machine may not let the head read for a while
  Bytes received;
  std::thread reader([&] {
    std::vector<char> buffer(std::size_t{1} << 20);
    while (received.size() < upload.size()) {
      const auto count = head_.receive(buffer.data(), buffer.size());
      if (count <= 0) return;
      received.append(buffer.data(), static_cast<std::size_t>(count));
    }
  });
  EXPECT_EQ(send(upload), 0);
  reader.join();
  EXPECT_TRUE(received == upload);
}

TEST(PatienceTest, IsWhatTheHeaderSays) {
  EXPECT_EQ(longestSendPause, std::chrono::seconds(60));
  // The keep-alive command leaves every 30 seconds: whatever the moment of the cut, the probes are over 60 seconds after it.
  constexpr std::chrono::seconds betweenKeepAlives{30};
  constexpr std::chrono::seconds stopOfAThread{2};
  EXPECT_LT(keepAlive.silence + keepAlive.probes * keepAlive.interval, std::chrono::seconds(60) - betweenKeepAlives - stopOfAThread);
}

TEST(PatienceTest, IsWhatTheSystemWasTold) {
  ScriptedHead head(Script{});
  CommandChannel channel;
  ASSERT_EQ(channel.Connect("127.0.0.1"), 0);
  const std::optional<platform::KeepAlive> told = keepAliveOf(channel.socket()->handle());
  if (!told) GTEST_SKIP() << "this system takes the times, but does not tell them";
  EXPECT_EQ(told->silence, keepAlive.silence);
  EXPECT_EQ(told->interval, keepAlive.interval);
  EXPECT_EQ(told->probes, keepAlive.probes);
}

}  // namespace

}  // namespace fringix::test
