// Idle sessions whose cable is cut, in real time.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"
#include "support/eventually.h"
#include "support/posix/networks.h"

namespace fringix::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto limit = 60s;

// A session with a head at the other end of a cable.
struct FarSession {
  FarSession(const Networks& networks, const char* address) {
    networks.onTheHeadsSide([&] { head = std::make_unique<ScriptedHead>(handshake() + Script{standStill()}, address); });
    if (SLDevAlloc(address, &handle) != SLALL_OKAY) throw std::runtime_error("the session did not open");
  }
  ~FarSession() { SLDevFree(handle); }

  bool failed() const {
    std::uint32_t width = 0;
    SLGetCameraSize(handle, &width, nullptr);
    return width == static_cast<std::uint32_t>(-1);
  }

  std::unique_ptr<ScriptedHead> head;
  std::int32_t handle = -1;
};

Clock::duration timeToFailure(const FarSession& session, Clock::time_point cut) {
  EXPECT_TRUE(eventually([&] { return session.failed(); }, limit));
  return Clock::now() - cut;
}

void cutBothAndWait() {
  Networks networks;
  networks.connect("early", "10.1.0.1/24", "10.1.0.2/24");
  networks.connect("late", "10.2.0.1/24", "10.2.0.2/24");
  const FarSession early(networks, "10.1.0.2");
  const FarSession late(networks, "10.2.0.2");

  // The keep-alive command comes 30 seconds after the opening: here the probes are over by then...
  platform::sleepFor(1s);
  networks.takeDown("early");
  const auto earlyCut = Clock::now();
  // ... and here they are not, and the command itself goes unconfirmed.
  platform::sleepFor(21s);
  networks.takeDown("late");
  const auto lateCut = Clock::now();

  const auto first = timeToFailure(early, earlyCut);
  const auto second = timeToFailure(late, lateCut);
  EXPECT_LT(first, limit);
  EXPECT_LT(second, limit);
  std::int32_t gain = 0;
  EXPECT_EQ(SLGetGain(late.handle, &gain), SLSYSTEM_ERROR);
  std::printf("idle sessions: failed %.1f s and %.1f s after the cut\n", std::chrono::duration<double>(first).count(),
              std::chrono::duration<double>(second).count());
}

TEST(CutCableInRealTimeTest, AnIdleSessionHasFailedWithinAMinute) {
  const Verdict verdict = inProcessWithNetworks(cutBothAndWait);
  if (verdict == Verdict::notPermitted) GTEST_SKIP() << "network namespaces and interfaces for them (/dev/net/tun) are not permitted here";
  EXPECT_EQ(verdict, Verdict::passed);
}

}  // namespace

}  // namespace fringix::test
