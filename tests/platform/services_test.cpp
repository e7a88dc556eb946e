// Lock, event, clock and bounded formatting: the same promises on every system.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdarg>
#include <cstring>
#include <thread>

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/event.h"
#include "platform/reentrant_lock.h"

namespace fringix::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

bool takenByOther(ReentrantLock& lock) {
  bool free = false;
  std::thread([&] {
    free = lock.try_lock();
    if (free) lock.unlock();
  }).join();
  return !free;
}

TEST(ReentrantLockTest, ItsOwnerTakesItAgainAndOthersWait) {
  ReentrantLock lock;
  EXPECT_FALSE(takenByOther(lock));
  lock.lock();
  lock.lock();
  EXPECT_TRUE(takenByOther(lock));
  lock.unlock();
  EXPECT_TRUE(takenByOther(lock));
  lock.unlock();
  EXPECT_FALSE(takenByOther(lock));
}

TEST(EventTest, StaysSetForEveryWaiterUntilReset) {
  ManualResetEvent event;
  EXPECT_FALSE(event.wait(milliseconds(0)));
  event.set();
  event.set();
  EXPECT_TRUE(event.wait(milliseconds(0)));
  EXPECT_TRUE(event.wait(milliseconds(0)));
  event.reset();
  EXPECT_FALSE(event.wait(milliseconds(0)));
  event.reset();
  EXPECT_FALSE(event.wait(milliseconds(0)));
}

TEST(EventTest, AWaitEndsWhenItIsSet) {
  ManualResetEvent event;
  std::thread setter([&] {
    sleepFor(milliseconds(100));
    event.set();
  });
  EXPECT_TRUE(event.wait(std::chrono::seconds(20)));
  setter.join();
}

TEST(EventTest, AWaitKeepsItsLimit) {
  ManualResetEvent event;
  const auto start = Clock::now();
  EXPECT_FALSE(event.wait(milliseconds(200)));
  EXPECT_GE(Clock::now() - start, milliseconds(190));
}

TEST(ClockTest, CountsSecondsSince1970) {
  const auto now = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  EXPECT_NEAR(static_cast<double>(secondsSinceEpoch()), static_cast<double>(now), 2.0);
}

TEST(ClockTest, SleepsNoShorterThanAsked) {
  const auto start = Clock::now();
  sleepFor(milliseconds(100));
  EXPECT_GE(Clock::now() - start, milliseconds(99));
}

int format(char* buffer, std::size_t limit, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = formatBounded(buffer, limit, format, arguments);
  va_end(arguments);
  return result;
}

TEST(FormatTest, TellsTheLengthOrThatTheTextWasCut) {
  char buffer[12];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(format(buffer, 10, "%i-%s", 42, "abc"), 6);
  EXPECT_STREQ(buffer, "42-abc");
  EXPECT_EQ(format(buffer, 10, "%s", "0123456789"), 10);
  EXPECT_STREQ(buffer, "0123456789");
  EXPECT_LT(format(buffer, 10, "%s", "0123456789x"), 0);
  EXPECT_STREQ(buffer, "0123456789");
  EXPECT_EQ(buffer[11], '#');
}

}  // namespace

}  // namespace fringix::platform
