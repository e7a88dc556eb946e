// The soak as it is started by hand, small and short; ./run soak is the long one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/sanitizers.h"

namespace fringix::test {
namespace {

constexpr std::chrono::minutes limit{4};

struct Soaked {
  int status;
  std::vector<std::string> lines;
  bool tell(std::string_view part) const {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return line.find(part) != std::string::npos; });
  }
};

Soaked soak(const std::vector<std::string>& arguments) {
  ChildProcess process(FRINGIX_SOAK, arguments);
  Soaked soaked{-1, {}};
  while (const auto line = process.nextLine(limit)) {
    std::printf("%s\n", line->c_str());
    soaked.lines.push_back(*line);
  }
  soaked.status = process.wait().value_or(-1);
  return soaked;
}

// A few heads and threads only: what it takes in processor time the other tests do not have.
TEST(SoakInRealTimeTest, FindsNothingWrong) {
  const Soaked soaked =
      soak({"20s", "--seed", "15", "--heads", "4", "--threads", "4", "--sessions", "6", "--rate", "15", "--triggers", "40"});
  EXPECT_EQ(soaked.status, 0);
  EXPECT_TRUE(soaked.tell("seed 15: nothing was wrong"));
}

TEST(LeakingSoakInRealTimeTest, IsNoticed) {
  if (builtWithSanitizers) GTEST_SKIP() << "sanitizers keep what is freed, so memory is not judged";
  const Soaked soaked = soak(
      {"6s", "--heads", "2", "--threads", "2", "--sessions", "2", "--rate", "50", "--triggers", "20", "--faults", "0", "--leak", "65536"});
  EXPECT_EQ(soaked.status, 1);
  EXPECT_TRUE(soaked.tell("VIOLATION: heap grows"));
}

}  // namespace
}  // namespace fringix::test
