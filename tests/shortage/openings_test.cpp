// Opening and closing sessions, searches and triggers, with every call of the system failing that they make.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "faulty_head.h"
#include "shortage.h"
#include "support/eventually.h"
#include "support/process_state.h"
#include "sweep.h"

namespace fringix::test {

namespace {

constexpr const char* here = "127.0.0.1";
constexpr std::int32_t serial = 1001;

#ifdef _WIN32
constexpr std::size_t threadsOfTheSystem = 1;  // Wine starts one for the first socket that somebody waits for
constexpr long locksOfTheRuntime = 8;          // which take their memory when they are first used, once for all
#else
constexpr std::size_t threadsOfTheSystem = 0;
constexpr long locksOfTheRuntime = 0;
#endif

constexpr long listOfHeads = 1;  // the blocks of memory that it has

std::atomic<int> heard = 0;
void hear(void*) { ++heard; }

// What came of a session: opened, used, closed.
struct Life {
  int opened = SLALL_OKAY;
  int used = SLALL_OKAY;
  int closed = SLALL_OKAY;
  std::int32_t handle = -1;
  bool operator==(const Life&) const = default;
};

std::string text(const Life& life) {
  return std::to_string(life.opened) + ", " + std::to_string(life.used) + ", " + std::to_string(life.closed) + " for handle " +
         std::to_string(life.handle);
}

Life live(int (*open)(std::int32_t* handle)) {
  Life life;
  std::int32_t gain = 0;
  life.opened = open(&life.handle);
  if (life.opened != SLALL_OKAY) return life;
  life.used = SLGetGain(life.handle, &gain);
  life.closed = SLDevFree(life.handle);
  return life;
}

int openByAddress(std::int32_t* handle) { return SLDevAlloc(here, handle); }
int openBySerial(std::int32_t* handle) { return SLDevAllocBySerial(serial, handle); }

class OpeningInShortageTest : public testing::Test {
 protected:
  OpeningInShortageTest() { shortage_hurry(1); }
  ~OpeningInShortageTest() override {
    printTally();
    EXPECT_TRUE(eventually([&] { return threadCount() <= threads_ + threadsOfTheSystem && descriptorCount() == descriptors_; }))
        << threadCount() << " threads for " << threads_ << ", " << descriptorCount() << " files for " << descriptors_;
    shortage_hurry(0);
  }

  // A failure of memory, of the connection, and of nothing else. What only the threads of the session meet nobody else notices.
  static bool mayGive(const Fault& fault, int result) {
    if (result == SLALL_OKAY) return true;
    if (fault.struck == 0 || fault.isHarmless()) return false;
    if (fault.isOf("malloc")) return result == SLSYSTEM_ERROR || result == SLCONNECTION_ERROR;
    if (fault.isOf("eventfd")) return result == SLSYSTEM_ERROR;
    const bool isOfTheConnection =
        fault.isOf("socket") || fault.isOf("connect") || fault.isOf("send") || fault.isOf("recv") || fault.isOf("poll");
    return isOfTheConnection && result == SLCONNECTION_ERROR;
  }

  // Handles count the sessions that were opened.
  testing::AssertionResult judge(const Fault& fault, const Life& life, int (*open)(std::int32_t* handle)) {
    const bool notFound = open == openBySerial && life.opened == SLCONNECTION_ERROR;  // its answer was lost, or came too late
    // A keep-alive thread whose wait fails goes on at once, and may stand at the session's lock when that closes.
    const bool outlived = fault.struck > 0 && fault.isOf("poll") && life.closed == SLSYSTEM_ERROR;
    const std::int32_t handle = life.opened == SLALL_OKAY ? nextHandle_++ : -1;
    shortage_watch(1);  // no pause
    const Life plain = live(openByAddress);
    shortage_watch(0);
    if (plain.opened == SLALL_OKAY) ++nextHandle_;
    if ((notFound || mayGive(fault, life.opened)) && (life.used == SLSYSTEM_ERROR || mayGive(fault, life.used)) &&
        (outlived || mayGive(fault, life.closed)) && life.handle == handle &&
        plain == Life{SLALL_OKAY, SLALL_OKAY, SLALL_OKAY, nextHandle_ - 1}) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "gave " << text(life) << ", then " << text(plain);
  }

  void sweepLife(const char* name, int (*open)(std::int32_t* handle)) {
    Life life;
    const Life first = live(openByAddress);
    nextHandle_ = first.handle + 1;
    const long left = sweep({name, [&] { life = live(open); }, [&](const Fault& fault) { return judge(fault, life, open); }});
    EXPECT_LE(left, locksOfTheRuntime + (open == openBySerial ? listOfHeads : 0));
  }

  FaultyHead head{here};

 private:
  const std::size_t threads_ = threadCount();
  const std::size_t descriptors_ = descriptorCount();
  std::int32_t nextHandle_ = 0;
};

TEST_F(OpeningInShortageTest, ByAddressEndsWithItsStatus) { sweepLife("SLDevAlloc, SLDevFree", openByAddress); }

TEST_F(OpeningInShortageTest, ASearchGivesWhatItHasFound) {
  int result = 0;
  std::int32_t count = 0;
  DeviceKeyEntry entry{};
  DeviceKeyEntryEx longEntry{};
  const auto search = [&] {
    count = 0;
    result = SLGetDeviceKeyListSize(&count);
    const int expected = count > 0 ? SLALL_OKAY : SLBAD_PARAMETER;
    if (SLGetDeviceKeyListEntry(0, &entry) != expected && result == SLALL_OKAY) result = 1;
    if (SLGetDeviceKeyListEntryEx(0, &longEntry) != expected && result == SLALL_OKAY) result = 2;
  };
  const auto check = [&](const Fault& fault) {
    const bool mayBe = result == SLALL_OKAY || (fault.isOf("malloc") && result == SLSYSTEM_ERROR);
    return mayBe ? testing::AssertionSuccess() : testing::AssertionFailure() << "gave " << result;
  };
  const long left = sweep({"SLGetDeviceKeyListSize", search, check, true});
  EXPECT_LE(left, locksOfTheRuntime + listOfHeads);
  EXPECT_TRUE(eventually([&] { return (search(), count == 1); }));
}

TEST_F(OpeningInShortageTest, BySerialEndsWithItsStatus) {
  if (!everyFault()) GTEST_SKIP() << "it takes minutes: ./run faults does it on Linux";
  sweepLife("SLDevAllocBySerial", openBySerial);
}

TEST_F(OpeningInShortageTest, TriggersComeAgainWithTheNextSession) {
  if (!everyFault()) GTEST_SKIP() << "it takes minutes: ./run faults does it on Linux";
  std::int32_t handles[2]{-1, -1};
  const auto listenTwice = [&] {
    for (std::int32_t& handle : handles) {
      if (SLDevAlloc(here, &handle) == SLALL_OKAY) SLRegisterGPIOCallback(handle, hear);
    }
    shortage_watch(0);  // the head's own calls do not fail
    head.server.raiseTrigger();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    shortage_watch(1);
    for (const std::int32_t handle : handles) {
      if (handle < 0) continue;
      EXPECT_NE(SLDevFree(handle), SLUNKNOWN_DEVICE_ID);
    }
  };
  const auto listenOnce = [&](const Fault&) {
    std::int32_t handle = -1;
    heard = 0;
    shortage_watch(1);  // no pauses
    const int opened = SLDevAlloc(here, &handle);
    SLRegisterGPIOCallback(handle, hear);
    shortage_watch(0);
    const bool listens = opened == SLALL_OKAY && eventually([&] {
                           head.server.raiseTrigger();
                           return eventually([] { return heard > 0; }, std::chrono::milliseconds(2));
                         });
    shortage_watch(1);
    SLDevFree(handle);
    shortage_watch(0);
    return listens ? testing::AssertionSuccess() : testing::AssertionFailure() << "opening gave " << opened << ", and no trigger came";
  };
  EXPECT_EQ(sweep({"triggers", listenTwice, listenOnce}), 0);
}

}  // namespace

}  // namespace fringix::test
