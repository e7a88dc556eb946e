// The keep-alive: when it is sent, and what ends the heartbeat.
#include "threads/heartbeat_thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "device/open_session.h"
#include "diagnosis/trace.h"
#include "fringix/fringix.h"
#include "support/captured_trace.h"

namespace fringix::test {

namespace {

using Lines = std::vector<std::string>;

const Bytes noop = text("100MSG_SLNOOP");
constexpr std::int64_t muchLater = 1000;  // seconds

std::string line(const std::string& message) { return "<QOR> " + message + "\r\n"; }

// A heartbeat on the calling thread that wakes so many times and is then asked to stop.
class HeartbeatTest : public testing::Test {
 protected:
  struct Wakings final : HeartbeatClock {
    bool waitForStop(const platform::ManualResetEvent&, std::chrono::milliseconds limit) override {
      limits.push_back(limit);
      return wakeUps.empty();
    }
    std::int64_t now() override {
      if (withoutMemory) throw std::bad_alloc();
      const std::int64_t ahead = wakeUps.front();
      wakeUps.erase(wakeUps.begin());
      return lastSend + ahead;
    }
    bool withoutMemory = false;
    std::int64_t lastSend = 0;
    std::vector<std::int64_t> wakeUps;  // seconds after the last send
    std::vector<std::chrono::milliseconds> limits;
  };

  std::int32_t run(ICameraDevice* device, std::vector<std::int64_t> wakeUps) {
    if (device != nullptr) device->GetLastSendTime(&clock_.lastSend);
    clock_.wakeUps = std::move(wakeUps);
    HeartbeatThread heartbeat(clock_);
    heartbeat.setDevice(device);
    CapturedTrace capture;
    setDebugFlag(1);
    const std::int32_t result = heartbeat.ThreadProc();
    setDebugFlag(0);
    lines_ = capture.lines();
    return result;
  }

  // The lines without the one that a session's own heartbeat may have said in between: that it starts, too.
  Lines saidByThis() const {
    Lines said = lines_;
    if (std::count(said.begin(), said.end(), started) == 2) said.erase(std::find(said.begin() + 1, said.end(), started));
    return said;
  }

  const std::string started = line("HeartbeatThread: ThreadProc started");
  const std::string returning = line("HeartbeatThread: returning from ThreadProc");
  Wakings clock_;
  Lines lines_;
};

TEST_F(HeartbeatTest, WithoutADeviceItEndsAtOnce) {
  EXPECT_EQ(run(nullptr, {}), -1);
  EXPECT_EQ(lines_, Lines{started});
}

TEST_F(HeartbeatTest, AskedToStopItSaysSo) {
  OpenSession session(Script{});
  EXPECT_EQ(run(&session.device(), {}), 0);
  EXPECT_EQ(saidByThis(), (Lines{started, returning}));
  EXPECT_EQ(clock_.limits, std::vector<std::chrono::milliseconds>{std::chrono::seconds(15)});
}

TEST_F(HeartbeatTest, FifteenSecondsOfSilenceAreNotEnough) {
  OpenSession session(Script{});
  EXPECT_EQ(run(&session.device(), {0, 1, 15}), 0);
  EXPECT_EQ(session.sent(), Bytes());
}

TEST_F(HeartbeatTest, SixteenSecondsOfSilenceAre) {
  OpenSession session(Script{});
  EXPECT_EQ(run(&session.device(), {16}), 0);
  EXPECT_EQ(readable(session.sent()), readable(noop));
}

TEST_F(HeartbeatTest, EveryWakeUpAfterSilenceSendsOne) {
  OpenSession session(Script{});
  EXPECT_EQ(run(&session.device(), {16, 15, muchLater}), 0);
  EXPECT_EQ(readable(session.sent()), readable(noop + noop));
}

TEST_F(HeartbeatTest, WithoutAConnectionItEnds) {
  OpenSession session({reset()});
  ASSERT_EQ(session.device().GetSerial(nullptr), SLCONNECTION_ERROR);
  EXPECT_EQ(run(&session.device(), {muchLater}), -2);
  EXPECT_EQ(saidByThis(), Lines{started});
}

TEST_F(HeartbeatTest, AKeepAliveThatCannotBeSentEndsIt) {
  OpenSession session({reset()});
  session.awaitEndOfScript();
  EXPECT_EQ(run(&session.device(), {muchLater}), -3);
  EXPECT_EQ(session.device().GetCameraWidth(), -1) << "the session has failed";
}

// A thread that lets an exception out ends the process.
TEST_F(HeartbeatTest, WithoutMemoryItEndsAndTheSessionGoesOn) {
  OpenSession session(Script{});
  clock_.withoutMemory = true;
  EXPECT_EQ(run(&session.device(), {muchLater}), -4);
  EXPECT_EQ(saidByThis(), Lines{started});
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY);
}

}  // namespace

}  // namespace fringix::test
