// Faults while a session is opened and closed, of searches, and of triggers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "faulty_head.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* here = "127.0.0.1";
constexpr std::int32_t serial = 1001;

class OpeningUnderFaults : public testing::Test {
 protected:
  int open() { return SLDevAlloc(here, &handle); }
  std::int32_t listed() {
    std::int32_t count = -1;
    EXPECT_EQ(SLGetDeviceKeyListSize(&count), SLALL_OKAY);
    return count;
  }
  bool canOpen() { return open() == SLALL_OKAY && SLDevFree(handle) == SLALL_OKAY; }

  FaultyHead head{here};
  std::int32_t handle = -1;
};

TEST_F(OpeningUnderFaults, EndsWithItsStatusInBoundedTime) {
  for (const auto& [fault, status] :
       std::vector<std::pair<const char*, int>>{{"at greeting: cut", SLCONNECTION_ERROR},
                                                {"at greeting: cut at byte 3", SLCONNECTION_ERROR},
                                                {"at greeting: reset", SLCONNECTION_ERROR},
                                                {"at greeting: drip every 10 ms", SLALL_OKAY},
                                                {"at greeting: stall for 100 ms", SLALL_OKAY},
                                                {"at greeting: stall", SLHANDSHAKE_TIMEOUT},
                                                {"at SLGetMaxImageSize: cut at byte 7", SLCONNECTION_ERROR},
                                                {"at SLGetMaxImageSize: reset", SLCONNECTION_ERROR},
                                                {"at SLGetMaxImageSize: wrong status -7", SLSYSTEM_ERROR},
                                                {"at SLGetProjDimension: cut", SLCONNECTION_ERROR},
                                                {"at SLGetProjDimension: restart after 10 ms", SLCONNECTION_ERROR}}) {
    ASSERT_TRUE(eventually([&] { return canOpen(); })) << "before " << fault;
    head.set(fault);
    const auto begin = Clock::now();
    EXPECT_EQ(open(), status) << fault;
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(20)) << fault;
    head.clear();
    EXPECT_EQ(status == SLALL_OKAY ? SLDevFree(handle) : SLALL_OKAY, SLALL_OKAY) << fault;
  }
}

TEST_F(OpeningUnderFaults, AFrozenHeadTimesOutAndIsNotFound) {
  ASSERT_EQ(open(), SLALL_OKAY);
  std::int32_t other = -1;
  EXPECT_TRUE(eventually([&] { return listed() == 1; })) << "on a busy machine an answer may miss a search";
  head.set("at SLClearMask: frozen");
  EXPECT_EQ(SLClearMask(handle), SLALL_OKAY);
  ASSERT_TRUE(eventually([&] { return head.server.faults().away(); }));
  EXPECT_EQ(listed(), 0);
  EXPECT_EQ(SLDevAllocBySerial(serial, &other), SLCONNECTION_ERROR);
  EXPECT_EQ(SLDevAlloc(here, &other), SLHANDSHAKE_TIMEOUT);
  head.clear();
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
  ASSERT_TRUE(eventually([&] { return SLDevAllocBySerial(serial, &other) == SLALL_OKAY; }));
  EXPECT_EQ(SLDevFree(other), SLALL_OKAY);
}

TEST_F(OpeningUnderFaults, BySerialNumberFailsAsByAddress) {
  head.set("at greeting: cut");
  EXPECT_EQ(SLDevAllocBySerial(serial, &handle), SLCONNECTION_ERROR);
}

TEST_F(OpeningUnderFaults, ARestartingHeadRefusesUntilItIsBack) {
  ASSERT_EQ(open(), SLALL_OKAY);
  head.set("at SLClearMask, once: restart after 300 ms");
  EXPECT_EQ(SLClearMask(handle), SLALL_OKAY);
  std::int32_t gain = 0;
  EXPECT_EQ(SLGetGain(handle, &gain), SLCONNECTION_ERROR);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
  EXPECT_TRUE(eventually([&] { return canOpen(); }));
}

TEST_F(OpeningUnderFaults, AFarewellThatIsStruckStillFrees) {
  for (const char* fault : {"at ByeBye=: reset", "at ByeBye=: stall for 20 ms"}) {
    ASSERT_EQ(open(), SLALL_OKAY);
    head.set(fault);
    EXPECT_EQ(SLDevFree(handle), SLALL_OKAY) << fault;
    head.clear();
  }
}

std::atomic<int> heard = 0;

// The callback's count once it has stayed the same for a while.
int settledCount() {
  int count = -1;
  while (count != heard) {
    count = heard;
    std::this_thread::sleep_for(milliseconds(200));
  }
  return count;
}

TEST_F(OpeningUnderFaults, TriggersAreLostAndDoubled) {
  heard = 0;
  ASSERT_EQ(open(), SLALL_OKAY);
  ASSERT_EQ(SLRegisterGPIOCallback(handle, [](void*) { ++heard; }), SLALL_OKAY);
  ASSERT_TRUE(eventually([&] {
    head.server.raiseTrigger();
    return eventually([] { return heard > 0; }, milliseconds(100));
  })) << "from now on the session listens";
  const int before = settledCount();
  head.set("always: lost trigger");
  for (int i = 0; i < 3; ++i) head.server.raiseTrigger();
  EXPECT_EQ(settledCount(), before);
  head.clear();
  head.set("always: doubled trigger");
  head.server.raiseTrigger();
  EXPECT_TRUE(eventually([&] { return heard == before + 2; }));
  EXPECT_EQ(settledCount(), before + 2);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
}

}  // namespace

}  // namespace fringix::test
