// Random sequences of all exports on several sessions, whose heads do wrong at random, against what has to come of them: SecondReading for
// what heads say, SessionSlot for the life of a session. On a network in memory, on which no thread of the library runs.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>

#include "fringix/fringix.h"
#include "model/session_slot.h"
#include "model/shortest.h"

namespace fringix::test {

namespace {

using fuzz::network;

constexpr std::size_t slots = 3;

enum class Kind { call, open, alone, wrong, free, search };

Kind kindOf(const Step& step) {
  if (step.kind < 50) return Kind::call;
  if (step.kind < 78) return Kind::open;
  if (step.kind < 86) return Kind::alone;
  if (step.kind < 92) return Kind::wrong;
  return step.kind < 98 ? Kind::free : Kind::search;
}

// As many heads as one likes answer, the last one first.
void search(const Step& step) {
  const int count = step.which % 5;
  network().datagrams.clear();
  for (int head = count; head-- > 0;)
    network().datagrams.push_back({fuzz::firstOther, "SERIAL " + std::to_string(2000 + head) + " MODEL 1"});
  std::int32_t found = -1;
  EXPECT_EQ(SLGetDeviceKeyListSize(&found), SLALL_OKAY);
  EXPECT_EQ(found, count);
  for (int i = -1; i <= count; ++i) {
    DeviceKeyEntry entry{};
    EXPECT_EQ(SLGetDeviceKeyListEntry(i, &entry), i >= 0 && i < count ? SLALL_OKAY : SLBAD_PARAMETER);
    EXPECT_EQ(entry.serial, i >= 0 && i < count ? 2000 + i : 0);
    DeviceKeyEntryEx more{};
    EXPECT_EQ(SLGetDeviceKeyListEntryEx(i, &more), i >= 0 && i < count ? SLALL_OKAY : SLBAD_PARAMETER);
    EXPECT_EQ(more.serial, entry.serial);
  }
  std::int32_t handle = -7;
  EXPECT_EQ(SLDevAllocBySerial(1999, &handle), SLCONNECTION_ERROR);
  EXPECT_EQ(handle, -7);
}

void carryOut(SessionSlot& slot, const Step& step) {
  switch (kindOf(step)) {
    case Kind::call:
      return slot.call(step);
    case Kind::open:
      return slot.open(step);
    case Kind::alone:
      return slot.callAlone(step);
    case Kind::wrong:
      return slot.callWrongly(step);
    case Kind::free:
      return slot.free();
    default:
      return search(step);
  }
}

struct Played {
  std::size_t sequences = 0;
  std::size_t steps = 0;
  Statuses given;
};

void play(const Steps& steps, Played& played) {
  const fuzz::FreshNetwork fresh;
  network().others.resize(slots);
  network().addresses = {{0x7F000001, 0xFF000000, true}};
  std::deque<SessionSlot> sessions;
  for (std::size_t place = 0; place < slots; ++place) sessions.emplace_back(place, played.given);
  for (const Step& step : steps) {
    carryOut(sessions[static_cast<std::size_t>(step.slot)], step);
    const auto connected = std::count_if(sessions.begin(), sessions.end(), [](const SessionSlot& session) { return session.connected(); });
    EXPECT_EQ(network().open, static_cast<std::size_t>(connected)) << "sockets";
  }
  for (SessionSlot& session : sessions) session.free();
  SLSetDebugFlag(0);
  EXPECT_EQ(network().open, 0U) << "sockets";
  EXPECT_FALSE(network().waitedForEver);
  ++played.sequences;
  played.steps += steps.size();
}

// The first thing that is not as it has to be; empty when all is.
std::string complaintAbout(const Steps& steps, Played& played) {
  testing::TestPartResultArray results;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD,
                                                             &results);
    play(steps, played);
  }
  return results.size() == 0 ? "" : results.GetTestPartResult(0).message();
}

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

const char* const kindNames[] = {"call", "open", "alone", "wrong", "free", "search"};

}  // namespace

std::string describe(const Steps& steps) {
  std::string all;
  for (const Step& step : steps) {
    all += std::string("  ") + kindNames[static_cast<int>(kindOf(step))] + " slot " + std::to_string(step.slot) + " which " +
           std::to_string(step.which) + " damage " + std::to_string(step.damage) + " place " + std::to_string(step.place) + "\n";
  }
  return all;
}

namespace {

// MODEL_SEED and MODEL_SECONDS are what ./run model gives.
TEST(SessionModelTest, HoldsForRandomSequences) {
  constexpr int atOnce = 2000;
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<std::uint64_t>(numberFrom("MODEL_SECONDS", 0));
  std::uint64_t seed = numberFrom("MODEL_SEED", 15);
  Played played;
  do {
    const auto failing = shortestFailing(seed, atOnce, [&](const Steps& steps) { return complaintAbout(steps, played).empty(); });
    ASSERT_FALSE(failing) << "seed " << seed << "\n" << describe(*failing) << complaintAbout(*failing, played);
    ++seed;
  } while (std::chrono::steady_clock::now() < end);
  std::printf("%zu sequences of %zu steps, the last seed is %llu\n", played.sequences, played.steps,
              static_cast<unsigned long long>(seed - 1));
  for (const int status : {SLALL_OKAY, SLUNKNOWN_DEVICE_ID, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT,
                           SLMEASUREMENT_FAILED, SLVERSION_TOO_OLD}) {
    EXPECT_GT(played.given[status], 0U) << "never met: " << status;
    std::printf("%zu times %d\n", played.given[status], status);
  }
}

// A session that is opened, and then a call to it whose answer ends too early: nothing else matters.
bool breaksASession(const Steps& steps) {
  std::array<bool, slots> open{};
  return std::any_of(steps.begin(), steps.end(), [&](const Step& step) {
    bool& isOpen = open[static_cast<std::size_t>(step.slot)];
    if (kindOf(step) == Kind::open) isOpen = true;
    return isOpen && kindOf(step) == Kind::call && damageOf(step) == Damage::reset;
  });
}

TEST(SessionModelTest, ASequenceIsShortened) {
  const auto shortest = shortestFailing(15, 1000, [](const Steps& steps) { return !breaksASession(steps); });
  ASSERT_TRUE(shortest);
  const std::string slot = std::to_string(shortest->front().slot);
  EXPECT_EQ(describe(*shortest), "  open slot " + slot + " which 0 damage 0 place 0\n  call slot " + slot + " which 0 damage 2 place 0\n");
  EXPECT_FALSE(shortestFailing(15, 100, [](const Steps&) { return true; }));
}

}  // namespace

}  // namespace fringix::test
