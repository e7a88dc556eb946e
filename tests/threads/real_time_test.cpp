// The heartbeat once in real time, with the clock that users have. In a suite of its own, because it takes its time.
#include <gtest/gtest.h>

#include <thread>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

using namespace std::chrono_literals;

const Bytes noop = text("100MSG_SLNOOP");
const Bytes logging = text("70MSG_SLEnableCamLogging");

// Times of sends are whole seconds: what is sent late in a second looks older than it is, and a wake-up that comes a little late then
// finds a silence of 16 seconds.
void awaitBeginningOfASecond() {
  using std::chrono::system_clock;
  const auto isYoung = [] {
    const auto age = system_clock::now().time_since_epoch() % 1s;
    return age > 100ms && age < 300ms;  // the library's clock may be some milliseconds behind
  };
  ASSERT_TRUE(eventually(isYoung));
}

TEST(HeartbeatInRealTimeTest, AnIdleSessionSendsOneAtTheSecondWakeUpAndABusyOneNone) {
  OpenSession idle(Script{});
  OpenSession busy(Script{}, {}, "127.0.0.2");
  OpenSession shortLived(Script{}, {}, "127.0.0.3");
  platform::sleepFor(10s);
  EXPECT_EQ(busy.device().EnableCamLogging(), SLALL_OKAY);
  EXPECT_EQ(shortLived.free(), SLALL_OKAY);
  platform::sleepFor(10s);
  EXPECT_EQ(busy.device().EnableCamLogging(), SLALL_OKAY);
  platform::sleepFor(12s);
  EXPECT_EQ(readable(idle.sent()), readable(noop));
  EXPECT_EQ(readable(busy.sent()), readable(logging + logging));
  EXPECT_EQ(shortLived.sent(), Bytes()) << "none after the end";
}

TEST(EarlyHeartbeatInRealTimeTest, TheFirstWakeUpSendsNothing) {
  awaitBeginningOfASecond();
  OpenSession session(Script{});
  platform::sleepFor(17s);
  EXPECT_EQ(session.sent(), Bytes());
}

}  // namespace

}  // namespace fringix::test
