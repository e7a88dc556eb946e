// A session that nobody uses costs its host next to nothing.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "abi/greeting_head.h"
#include "fringix/fringix.h"
#include "support/process_state.h"

namespace fringix::test {

namespace {

using namespace std::chrono_literals;

TEST(IdleSessionInRealTimeTest, TakesLessThanAThousandthOfAProcessor) {
  const ScriptedHead started(silentHead());
  int handle = -1;
  ASSERT_EQ(SLDevAlloc("127.0.0.1", &handle), SLALL_OKAY);
  const auto before = processorTime();
  std::this_thread::sleep_for(20s);
  const auto used = processorTime() - before;
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
  RecordProperty("processor_time_us", static_cast<int>(used.count()));
  EXPECT_LT(used, 20ms);
}

}  // namespace

}  // namespace fringix::test
