// Suites that end in every way a suite can end. The runner's self-test expects each ending to be told as what it is.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

TEST(Passes, First) {}
TEST(Passes, Second) {}

TEST(Fails, Passes) {}
TEST(Fails, Fails) { FAIL() << "on \"purpose\" & <so>"; }

TEST(Skips, Skips) { GTEST_SKIP() << "for a reason"; }
TEST(Skips, DISABLED_Sleeps) { FAIL(); }

TEST(Crashes, Passes) {}
TEST(Crashes, Crashes) { std::abort(); }

// Leaves the program early with the status of success.
TEST(Leaves, Leaves) { std::_Exit(0); }
TEST(Leaves, NeverRuns) {}

TEST(Hangs, Hangs) { std::this_thread::sleep_for(std::chrono::hours(1)); }

// All cases pass, then the program fails while it ends.
TEST(FailsAtExit, Passes) {
  std::atexit([] { std::_Exit(3); });
}

class Takes : public testing::TestWithParam<int> {};
TEST_P(Takes, OddNumbers) { EXPECT_EQ(GetParam() % 2, 1); }
INSTANTIATE_TEST_SUITE_P(Each, Takes, testing::Values(1, 2));

// The runner's last argument lies in the folder of the suite.
std::string flags;
bool isTriedAgain() {
  const std::string tried = flags.substr(flags.find('=') + 1) + ".tried";
  return std::filesystem::exists(tried) || !std::ofstream(tried);
}

TEST(StartsLate, Passes) {}
TEST(NeverStarts, Passes) {}
bool starts() {
  if (flags.find("/NeverStarts/") != flags.npos) return false;
  return flags.find("/StartsLate/") == flags.npos || isTriedAgain();
}

TEST(HasNetworksLate, Passes) {
  if (isTriedAgain()) return;
  std::puts("this machine has no networks");
  FAIL();
}

int main(int count, char** arguments) {
  flags = arguments[count - 1];
  if (!starts()) return 9;
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
