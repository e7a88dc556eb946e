// The trigger listener by itself: whose triggers it takes, and how it fails.
#include <gtest/gtest.h>

#include "diagnosis/trace.h"
#include "platform/datagram.h"
#include "support/captured_trace.h"
#include "threads/held_listener.h"

namespace fringix::test {

namespace {

using Lines = std::vector<std::string>;

constexpr std::uint16_t triggerPort = 44331;

std::string line(const std::string& message) { return "<QOR> " + message + "\r\n"; }

struct CountingOwner final : TriggerCallbackClass {
  void OnTrigger() override { ++triggers; }
  int Init(std::unique_ptr<CommandChannel>) override { return 0; }
  int triggers = 0;
};

class GPIOThreadTest : public testing::Test {
 protected:
  // The triggers that reach a listener for `address` when 127.0.0.9 sends one.
  int triggersFor(const std::string& address) {
    CountingOwner owner;
    GPIOThread listener;
    EXPECT_EQ(listener.Start(address), 0);
    listener.Stop();
    listener.setOwner(&owner);
    listener.DispatchTrigger(0x7F000009);
    return owner.triggers;
  }
};

TEST_F(GPIOThreadTest, ComparesAddressesAsTexts) {
  EXPECT_EQ(triggersFor("127.0.0.9"), 1);
  for (const char* other : {"127.0.0.90", "127.0.0.", "127.0.9", "127.0.0.09", " 127.0.0.9", ""}) EXPECT_EQ(triggersFor(other), 0) << other;
}

TEST_F(GPIOThreadTest, WritesEveryByteOfTheAddressUnsigned) {
  CountingOwner owner;
  GPIOThread listener;
  listener.Start("255.200.128.1");
  listener.Stop();
  listener.setOwner(&owner);
  listener.DispatchTrigger(0xFFC88001);
  EXPECT_EQ(owner.triggers, 1);
}

TEST_F(GPIOThreadTest, WithoutAnybodyToTellNothingHappens) {
  GPIOThread listener;
  listener.Start("127.0.0.9");
  listener.Stop();
  listener.DispatchTrigger(0x7F000009);
}

TEST_F(GPIOThreadTest, AReceiverStopsBeforeItTakesAnotherDatagram) {
  const platform::SocketLibrary library;
  const auto sendTrigger = [] { return platform::sendDatagram(0x7F000001, {0x7F000001, triggerPort}, "02UDP_GPIO", 10); };
  HeldListener listener;
  listener.Start("127.0.0.1");
  ASSERT_TRUE(eventually([&] {
    sendTrigger();
    return listener.entered.wait(std::chrono::milliseconds(100));
  }));
  ASSERT_TRUE(sendTrigger());
  listener.stopWhileHeld();
  EXPECT_EQ(listener.result, 0);
  EXPECT_EQ(listener.triggers, 1);
}

TEST_F(GPIOThreadTest, AStoppedFollowerLeavesTheReceiverAlone) {
  GPIOThread receiver;
  GPIOThread follower;
  CapturedTrace capture;
  setDebugFlag(1);
  receiver.Start("127.0.0.9");
  follower.Start("127.0.0.9");
  EXPECT_EQ(follower.Stop(), 0);
  EXPECT_EQ(receiver.Stop(), 0);
  setDebugFlag(0);
  const Lines lines = capture.lines();
  for (const char* told : {"GPIOThread: ThreadProc started", "GPIOThread: returning from ThreadProc"})
    EXPECT_EQ(std::count(lines.begin(), lines.end(), line(told)), 2) << told;
}

TEST_F(GPIOThreadTest, ADatagramThatIsTooLongIsNoTrigger) {
  const platform::SocketLibrary library;
  const auto send = [](const std::string& text) {
    return platform::sendDatagram(0x7F000001, {0x7F000001, triggerPort}, text.data(), text.size());
  };
  CapturedTrace capture;
  HeldListener listener;
  listener.leave.set();
  setDebugFlag(1);
  listener.Start("0.0.0.0");  // whom nobody is who sends
  std::ptrdiff_t arrived = 0;
  EXPECT_TRUE(eventually([&] {
    send("02UDP_GPIO in more than 18 bytes");
    send("02UDP_GPIO 19 bytes");
    const Lines lines = capture.lines();
    arrived += std::count(lines.begin(), lines.end(), line("GPIOThread: Trigger occured!"));
    return arrived >= 4;
  }));
  setDebugFlag(0);
  EXPECT_EQ(listener.triggers, 0);
}

}  // namespace

}  // namespace fringix::test
