// Handles in many threads: sessions are opened and freed while others call with handles that are open, freed or were never given.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

// What a call with any handle may give while sessions come and go.
bool isPossible(int result) { return result == SLALL_OKAY || result == SLUNKNOWN_DEVICE_ID || result == SLSYSTEM_ERROR; }

class ConcurrentCallsTest : public testing::Test {
 protected:
  // Calls in threads of their own until the test ends.
  template <class Call>
  void keepCalling(Call call) {
    threads_.emplace_back([this, call] {
      while (!over_) call();
    });
  }

  ~ConcurrentCallsTest() override {
    over_ = true;
    for (std::thread& thread : threads_) thread.join();
  }

  std::atomic<int> newest_{-1};
  std::atomic<int> strange_{0};  // results that no call may give

 private:
  std::atomic<bool> over_{false};
  std::vector<std::thread> threads_;
};

TEST_F(ConcurrentCallsTest, AnyHandleMayBeUsedWhileSessionsAreOpenedAndFreed) {
  constexpr int rounds = 12;
  keepCalling([this] {
    std::uint32_t width = 0;
    if (SLGetCameraSize(-1, &width, nullptr) != SLUNKNOWN_DEVICE_ID) ++strange_;
    for (int handle = 0; handle < 300; ++handle) {  // most of them empty entries from the first round on, some of them sessions
      if (!isPossible(SLGetCameraSize(handle, &width, nullptr))) ++strange_;
    }
  });
  keepCalling([this] {
    std::uint32_t width = 0;
    if (!isPossible(SLGetCameraSize(newest_, &width, &width))) ++strange_;
    if (!isPossible(SLRegisterGPIOCallback(newest_, nullptr))) ++strange_;
  });
  keepCalling([this] {
    if (SLDevFree(-7) != SLUNKNOWN_DEVICE_ID) ++strange_;
  });
  const auto openAndFree = [this](const char* address) {
    for (int round = 0; round < rounds; ++round) {
      OpenSession session(Script{}, {}, address);
      newest_ = session.handle();
      if (session.free() != SLALL_OKAY || SLDevFree(session.handle()) != SLUNKNOWN_DEVICE_ID) ++strange_;
    }
  };
  std::thread other(openAndFree, "127.0.0.2");
  openAndFree("127.0.0.1");
  other.join();
  EXPECT_EQ(strange_, 0);
}

TEST_F(ConcurrentCallsTest, OfThreadsThatFreeASessionAtOnceOneDoes) {
  constexpr int threads = 8;
  OpenSession session(Script{});
  std::atomic<int> ready{0};
  std::atomic<int> stillKnown{0};
  std::vector<int> results(threads);
  std::vector<std::thread> freeing;
  for (int& result : results) {
    freeing.emplace_back([&] {
      for (++ready; ready < threads;) std::this_thread::yield();
      result = SLDevFree(session.handle());
      if (SLGetCameraSize(session.handle(), nullptr, nullptr) != SLUNKNOWN_DEVICE_ID) ++stillKnown;
    });
  }
  for (std::thread& thread : freeing) thread.join();
  EXPECT_EQ(std::count(results.begin(), results.end(), SLALL_OKAY), 1);
  EXPECT_EQ(std::count(results.begin(), results.end(), SLUNKNOWN_DEVICE_ID), threads - 1);
  EXPECT_EQ(stillKnown, 0) << "for each of them the handle is gone";
  EXPECT_EQ(readable(session.sent()), "") << "one farewell";
}

// The last one who lets go of a session destroys it, whoever that is.
TEST_F(ConcurrentCallsTest, ACallUnderWayKeepsItsSession) {
  const Bytes measurement = text("60MSG_SLStartMeasurement") + integer(7);
  OpenSession session({expect(measurement), reply(integer(0)), expect(text("21MSG_SLGetSerial")), reply(integer(70123))});
  struct Held {
    std::atomic<bool> entered{false};
    std::atomic<bool> release{false};
  } held;
  SLRegisterEventhandler(
      session.handle(),
      [](std::int32_t, void* context, std::int64_t) {
        auto& state = *static_cast<Held*>(context);
        state.entered = true;
        EXPECT_TRUE(eventually([&] { return state.release.load(); }));
      },
      &held);
  int measured = 1;
  int freed = 1;
  std::thread measuring([&] { measured = SLStartMeasurement(session.handle(), 7); });
  ASSERT_TRUE(eventually([&] { return held.entered.load(); }));
  std::thread freeing([&] { freed = session.free(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // by now it waits for the measurement
  held.release = true;
  measuring.join();
  freeing.join();
  EXPECT_EQ(measured, SLALL_OKAY);
  EXPECT_EQ(freed, SLALL_OKAY);
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLUNKNOWN_DEVICE_ID);
}

}  // namespace

}  // namespace fringix::test
