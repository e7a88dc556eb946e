// A listener whose port another program has: it waits, says so, and takes the port once it is free.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "diagnosis/trace.h"
#include "platform/datagram.h"
#include "support/captured_trace.h"
#include "support/eventually.h"
#include "threads/gpio_thread.h"

namespace fringix::test {

namespace {

constexpr std::uint32_t head = 0x7F000001;
constexpr std::uint16_t triggerPort = 44331;
constexpr const char* failureLine = "<QOR> ERROR: openPort for GPIO-socket failed\r\n";
constexpr const char* waitingLine = "<QOR> GPIOThread: another program or user has UDP port 44331, no triggers until it is free\r\n";

struct CountingListener final : GPIOThread, TriggerCallbackClass {
  CountingListener() {
    setOwner(this);
    Start("127.0.0.1");
  }
  ~CountingListener() override { Stop(); }
  void OnTrigger() override { ++triggers; }
  int Init(std::unique_ptr<CommandChannel>) override { return 0; }

  std::atomic<int> triggers{0};
};

class TakenPortTest : public testing::Test {
 protected:
  TakenPortTest() { setDebugFlag(1); }
  ~TakenPortTest() override { setDebugFlag(0); }

  bool says(const char* line) {
    return eventually([&] { return count(line) > 0; });
  }
  std::ptrdiff_t count(const char* line) {
    const auto lines = capture_.lines();
    return std::count(lines.begin(), lines.end(), line);
  }

  CapturedTrace capture_;
  platform::Socket other_ = platform::Socket::openDatagram();
};

TEST_F(TakenPortTest, IsWaitedForAndTaken) {
  ASSERT_TRUE(other_.setReuseAddress(true));
  ASSERT_TRUE(other_.bind({head, triggerPort}));
  CountingListener listener;
  EXPECT_TRUE(says(waitingLine));
  EXPECT_EQ(count(failureLine), 1);
  other_.close();
  EXPECT_TRUE(eventually([&] {
    platform::sendDatagram(head, {head, triggerPort}, "02UDP_GPIO", 10);
    return eventually([&] { return listener.triggers > 0; }, std::chrono::milliseconds(20));
  }));
  EXPECT_EQ(count(waitingLine), 1) << "said once";
}

TEST_F(TakenPortTest, AListenerThatWaitsForItStopsAtOnce) {
  ASSERT_TRUE(other_.bind({0, triggerPort}));
  CountingListener listener;
  ASSERT_TRUE(says(waitingLine));
  EXPECT_EQ(listener.Stop(), 0);
  EXPECT_EQ(count("<QOR> GPIOThread: returning from ThreadProc\r\n"), 1);
}

TEST_F(TakenPortTest, NobodyBindsItBesideAListener) {
  CountingListener listener;
  ASSERT_TRUE(eventually([&] {
    platform::sendDatagram(head, {head, triggerPort}, "02UDP_GPIO", 10);
    return eventually([&] { return listener.triggers > 0; }, std::chrono::milliseconds(20));
  }));
  ASSERT_TRUE(other_.setReuseAddress(true));
  EXPECT_FALSE(other_.bind({0, triggerPort}));
  EXPECT_FALSE(other_.bind({head, triggerPort}));
}

}  // namespace

}  // namespace fringix::test
