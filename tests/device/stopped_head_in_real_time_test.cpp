// Heads that stop without a word, and how long that goes unnoticed. In real time, in a suite of its own.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"

namespace fringix::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Outcome {
  int result;
  Clock::duration took;
};

template <class Call>
Outcome timed(Call call) {
  const auto start = Clock::now();
  const int result = call();
  return {result, Clock::now() - start};
}

void expectFailureAfter(std::chrono::seconds limit, const Outcome& outcome, const char* what) {
  EXPECT_EQ(outcome.result, SLCONNECTION_ERROR) << what;
  EXPECT_GE(outcome.took, limit - 20ms) << what;
  EXPECT_LT(outcome.took, limit + 10s) << what;
  std::printf("%s: failed after %.2f s\n", what, std::chrono::duration<double>(outcome.took).count());
}

TEST(StoppedHeadInRealTimeTest, AnUploadFailsAfterAMinuteAndACommandAfterHalfOfOne) {
  const std::vector<std::uint8_t> block(std::size_t{64} << 20);
  const auto size = static_cast<std::int32_t>(block.size());
  OpenSession stalling({expect(text("80MSG_SLSaveDataToFile") + integers(size, 6)), reply(integer(0)), standStill()});
  OpenSession frozen({standStill()}, {}, "127.0.0.2");

  auto upload =
      std::async(std::launch::async, [&] { return timed([&] { return SLSaveData(stalling.handle(), block.data(), size, "a.bin"); }); });
  auto command = std::async(std::launch::async, [&] {
    std::int32_t gain = 0;
    return timed([&] { return SLGetGain(frozen.handle(), &gain); });
  });
  platform::sleepFor(1s);  // by now the upload has the session's lock
  auto freeing = std::async(std::launch::async, [&] { return timed([&] { return stalling.free(); }); });

  expectFailureAfter(30s, command.get(), "a command to a frozen head");
  expectFailureAfter(60s, upload.get(), "an upload to a head that stalls");
  EXPECT_EQ(freeing.get().result, SLALL_OKAY) << "it has waited for the upload, and the session had failed by then";
}

}  // namespace

}  // namespace fringix::test
