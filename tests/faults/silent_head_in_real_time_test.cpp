// Faults that are silence, over all exports at once: the library waits for 30 seconds, in real time.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <string>
#include <vector>

#include "calls.h"
#include "faulty_head.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// What came of a call and of those after it.
struct Outcome {
  int result = 0;
  Seconds took{};
  int next = 0;
  int freeing = 0;
};

// The call that has no reply cannot notice: the one behind it does.
Outcome waitFor(FaultyHead& head, const Call& call, std::int32_t handle) {
  Outcome outcome;
  std::int32_t gain = 0;
  Stage stage{handle, &head.server.model(), head.sequence, {}};
  const auto begin = Clock::now();
  outcome.result = call.run(stage);
  if (call.reply == Reply::none && outcome.result == SLALL_OKAY) outcome.result = SLGetGain(handle, &gain);
  outcome.took = Clock::now() - begin;
  outcome.next = call.run(stage);
  outcome.freeing = SLDevFree(handle);
  return outcome;
}

void expectFailuresInTime(const std::string& address, const std::string& fault) {
  FaultyHead head(address);
  std::vector<std::int32_t> handles(calls().size(), -1);
  for (std::int32_t& handle : handles) {
    std::int32_t uptime = 0;
    ASSERT_EQ(SLDevAlloc(address.c_str(), &handle), SLALL_OKAY);
    ASSERT_EQ(SLGetUptime(handle, &uptime), SLALL_OKAY) << "from now on the session knows the head's version";
  }
  head.set(fault);
  std::vector<std::future<Outcome>> outcomes;
  for (std::size_t i = 0; i < calls().size(); ++i)
    outcomes.push_back(std::async(std::launch::async, waitFor, std::ref(head), std::cref(calls()[i]), handles[i]));
  for (std::size_t i = 0; i < calls().size(); ++i) {
    const Call& call = calls()[i];
    const Outcome outcome = outcomes[i].get();
    EXPECT_EQ(outcome.result, SLCONNECTION_ERROR) << call.name;
    EXPECT_GE(outcome.took.count(), 29.9) << call.name;
    EXPECT_LT(outcome.took.count(), 90) << call.name;
    EXPECT_EQ(outcome.next, call.withoutConnection) << call.name;
    EXPECT_EQ(outcome.freeing, SLALL_OKAY) << call.name;
    std::printf("%-24s%4d%6.1f s  %s\n", call.name, outcome.result, outcome.took.count(), fault.c_str());
  }
}

TEST(EveryCallToAStallingHeadInRealTimeTest, FailsAfterHalfAMinute) { expectFailuresInTime("127.0.1.20", "always: stall"); }

TEST(EveryCallToAFrozenHeadInRealTimeTest, FailsAfterHalfAMinute) { expectFailuresInTime("127.0.1.21", "always: frozen"); }

TEST(EveryCallWithAShortReplyInRealTimeTest, FailsAfterHalfAMinute) { expectFailuresInTime("127.0.1.22", "always: wrong length -3"); }

}  // namespace

}  // namespace fringix::test
