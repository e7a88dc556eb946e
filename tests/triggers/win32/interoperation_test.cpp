// Another program of the host shares the port with a session, by the names of the objects alone.
#include <gtest/gtest.h>

#include <atomic>
#include <fringix/fringix.hpp>
#include <string>

#include "head/serving/head_server.h"
#include "support/child_process.h"
#include "support/eventually.h"

namespace fringix::test {
namespace {

constexpr const char* address = "127.0.0.1";
constexpr const char* addressAsNumber = "2130706433";

head::HeadSettings settings() {
  head::HeadSettings settings;
  settings.address = address;
  settings.camera = {64, 48};
  settings.projector = {32, 20};
  return settings;
}

class InteroperationTest : public testing::Test {
 protected:
  InteroperationTest() { head_.start(); }

  bool ask(const std::string& command, const std::string& answer) {
    other_.write(command + "\n");
    return !other_.waitForLine(answer).empty();
  }

  head::HeadServer head_{settings()};
  ChildProcess other_{NAMED_OBJECTS_USER, {}};
};

TEST_F(InteroperationTest, ASessionFollowsTheOtherProgram) {
  ASSERT_TRUE(ask("receive", "receiver"));
  std::atomic<int> triggers{0};
  Device device(address);
  const Subscription subscription(device, [&](std::int32_t, std::int64_t) { ++triggers; });
  ASSERT_TRUE(ask(std::string("announce ") + addressAsNumber, "announced"));
  EXPECT_TRUE(eventually([&] { return triggers > 0; }));
  EXPECT_TRUE(ask("settle", "settled"));
  EXPECT_TRUE(ask("resign", "resigned"));
}

TEST_F(InteroperationTest, TheOtherProgramFollowsASession) {
  std::atomic<bool> told{false};
  Device device(address);
  // The announcement lasts until the handlers have returned.
  const Subscription subscription(device, [&](std::int32_t, std::int64_t) { eventually([&] { return told.load(); }); });
  other_.write("follow\n");
  std::string answer;
  EXPECT_TRUE(eventually([&] {
    head_.raiseTrigger();
    answer = other_.waitForLine("told", std::chrono::milliseconds(200));
    return !answer.empty();
  }));
  told = true;
  EXPECT_EQ(answer, std::string("told ") + addressAsNumber);
}

}  // namespace
}  // namespace fringix::test
