// The order of an end: the session's threads, the farewell, the pause in which the head may read it, the connection.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "device/camera_device.h"
#include "device/open_session.h"
#include "platform/clock.h"
#include "platform/datagram.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
using platform::Readiness;
using std::chrono::milliseconds;

constexpr std::uint32_t address = 0x7F000001;
constexpr std::uint16_t triggerPort = 44331;
constexpr milliseconds aWhile{300};  // shorter than the 2 seconds that a thread has
constexpr milliseconds patience{20000};

// A heartbeat that takes note of its stop only when the test lets it.
struct HeldClock final : HeartbeatClock {
  bool waitForStop(const platform::ManualResetEvent&, milliseconds) override {
    entered = true;
    release.wait(patience);
    return true;
  }
  std::int64_t now() override { return platform::secondsSinceEpoch(); }

  std::atomic<bool> entered{false};
  platform::ManualResetEvent release;
};

// A trigger callback that stays until the test lets it go.
struct HeldCallback {
  static inline std::atomic<bool> entered{false};
  static inline platform::ManualResetEvent release;

  static void call(void*) {
    entered = true;
    release.wait(patience);
  }
};

// The test itself is the head, and sees when what arrives.
class ClosingTest : public testing::Test {
 protected:
  ClosingTest() {
    listener_.setReuseAddress(true);
    EXPECT_TRUE(listener_.bind({address, commandPort}) && listener_.listen(1));
  }

  void open(HeartbeatClock& clock) {
    auto channel = std::make_unique<CommandChannel>();
    ASSERT_EQ(channel->Connect("127.0.0.1"), 0);
    connection_ = listener_.accept();
    const Bytes replies = integer(1) + integers(8, 4, 0) + integers(6, 5, 0);
    ASSERT_EQ(connection_.send(replies.data(), replies.size()), static_cast<std::ptrdiff_t>(replies.size()));
    session_ = CameraDevice::create(clock);
    ASSERT_EQ(session_->Init(std::move(channel)), SLALL_OKAY);
    ASSERT_EQ(readable(receive(handshakeBytes().size())), readable(handshakeBytes()));
  }

  std::future<int> close() {
    return std::async(std::launch::async, [this] { return session_->Close(); });
  }

  bool hearsNothing() { return connection_.waitReadable(aWhile) == Readiness::timedOut; }

  Bytes receive(std::size_t count) {
    Bytes bytes(count, '\0');
    std::size_t done = 0;
    while (done < count && connection_.waitReadable(patience) == Readiness::ready) {
      const auto received = connection_.receive(bytes.data() + done, count - done);
      if (received <= 0) break;
      done += static_cast<std::size_t>(received);
    }
    bytes.resize(done);
    return bytes;
  }

  // How long the connection stands after the farewell.
  milliseconds pauseAfterFarewell() {
    EXPECT_EQ(readable(receive(farewell_.size())), readable(farewell_));
    const auto heard = Clock::now();
    EXPECT_EQ(receive(1), Bytes()) << "nothing follows the farewell";
    return std::chrono::duration_cast<milliseconds>(Clock::now() - heard);
  }

  const Bytes farewell_ = text("ByeBye=");
  platform::SocketLibrary library_;
  platform::Socket listener_ = platform::Socket::openStream();
  platform::Socket connection_;
  std::shared_ptr<CameraDevice> session_;
};

TEST_F(ClosingTest, TheHeartbeatHasEndedBeforeTheFarewell) {
  HeldClock clock;
  open(clock);
  ASSERT_TRUE(eventually([&] { return clock.entered.load(); }));
  auto closed = close();
  EXPECT_TRUE(hearsNothing());
  clock.release.set();
  EXPECT_EQ(readable(receive(farewell_.size())), readable(farewell_));
  EXPECT_EQ(closed.get(), SLALL_OKAY);
}

TEST_F(ClosingTest, TheListenerHasEndedBeforeTheFarewell) {
  HeldCallback::entered = false;
  HeldCallback::release.reset();
  open(HeartbeatClock::ofTheSystem());
  session_->SetGPIOCallback(HeldCallback::call);
  ASSERT_TRUE(eventually([] {
    platform::sendDatagram(address, {address, triggerPort}, "02UDP_GPIO", 10);
    return eventually([] { return HeldCallback::entered.load(); }, milliseconds(100));
  }));
  auto closed = close();
  EXPECT_TRUE(hearsNothing());
  HeldCallback::release.set();
  EXPECT_EQ(readable(receive(farewell_.size())), readable(farewell_));
  EXPECT_EQ(closed.get(), SLALL_OKAY);
}

// The head may be late with its look at the farewell, which makes the pause look shorter: one good look is enough.
TEST_F(ClosingTest, TheConnectionStandsForAPauseAfterTheFarewell) {
  constexpr milliseconds pause{100};
  milliseconds longest{0};
  for (int look = 0; look < 5 && longest < pause - milliseconds(10); ++look) {
    open(HeartbeatClock::ofTheSystem());
    auto closed = close();
    longest = std::max(longest, pauseAfterFarewell());
    EXPECT_EQ(closed.get(), SLALL_OKAY);
  }
  EXPECT_GE(longest, pause - milliseconds(10));
  EXPECT_LT(longest, 50 * pause);
}

}  // namespace

}  // namespace fringix::test
