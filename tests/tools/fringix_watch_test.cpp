// The built program watching heads whose triggers the test raises.
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <regex>
#include <thread>

#include "application.h"
#include "head/serving/head_server.h"
#include "program.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/forced_end.h"
#include "support/json.h"
#include "triggered_line.h"

namespace fringix::test {
namespace {

head::HeadSettings secondHead() {
  head::HeadSettings settings = smallHead();
  settings.address = "127.0.0.3";
  settings.serial = 4712;
  return settings;
}

class FringixWatch : public testing::Test {
 protected:
  FringixWatch() { server_.start(); }

  static std::regex line(const std::string& address, int serial) {
    return std::regex("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}  " + address + " +head " + std::to_string(serial) + "  trigger");
  }

  head::HeadServer server_{smallHead()};
};

TEST_F(FringixWatch, PrintsTriggersOfSeveralHeadsAsTheyCome) {
  head::HeadServer second(secondHead());
  second.start();
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1", "127.0.0.3"});
  EXPECT_EQ(tool.nextLine(), "watching 2 heads, end with Ctrl-C");
  for (int i = 0; i < 3; ++i) {
    const std::string printed = lineAfterTrigger(tool, second);
    EXPECT_TRUE(std::regex_match(printed, line("127\\.0\\.0\\.3", 4712))) << printed;
  }
  server_.raiseTrigger();
  const std::string printed = tool.waitForLine("127.0.0.1");  // a follower on Windows may tell one trigger twice
  EXPECT_TRUE(std::regex_match(printed, line("127\\.0\\.0\\.1", 4711))) << printed;
}

TEST_F(FringixWatch, PrintsLinesOfJson) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "--json", "127.0.0.1"});
  EXPECT_EQ(tool.nextLine(), "watching 1 head, end with Ctrl-C");
  const Json event(lineAfterTrigger(tool, server_));
  EXPECT_EQ(event.without("/time"), Json(R"({"address": "127.0.0.1", "serial": 4711, "event": "trigger"})"));
}

TEST_F(FringixWatch, EndsAfterTheWantedNumberOfEvents) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1", "--count", "2"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  EXPECT_NE(lineAfterTrigger(tool, server_), "nothing");
  for (int i = 0; i < 3; ++i) server_.raiseTrigger();
  EXPECT_NE(tool.nextLine(), std::nullopt);
  EXPECT_EQ(tool.nextLine(), std::nullopt);
  EXPECT_EQ(tool.wait(), 0);
}

TEST_F(FringixWatch, CtrlCEndsItInOrder) {
  std::atomic<bool> farewell = false;
  head::HeadServer second(secondHead(), [&](head::Happening, const std::string&, const std::string& text) {
    if (text == "ByeBye=") farewell = true;
  });
  second.start();
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.3"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  if (!tool.interrupt()) GTEST_SKIP() << "no program can press Ctrl-C for another one here";
  EXPECT_EQ(tool.wait(), 0);
  EXPECT_EQ(tool.nextLine(), std::nullopt);
  EXPECT_TRUE(farewell);
}

TEST_F(FringixWatch, CtrlCEndsItWithoutAFailure) {
  std::atomic<bool> asked = false;
  head::HeadServer second(secondHead(), [&](head::Happening, const std::string&, const std::string& text) {
    if (text.find("GetSerial") != std::string::npos) asked = true;
  });
  second.start();
  std::atomic<int> exitCode = -1;
  std::thread watching([&] {
    const char* arguments[] = {"fringix", "watch", "127.0.0.3"};
    exitCode = tool::run(3, arguments);
  });
  // The first trigger makes the session ask for the serial number: then it is being watched.
  for (int i = 0; i < 1000 && !asked; ++i) {
    second.raiseTrigger();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (asked) std::raise(SIGINT);
  watching.join();
  EXPECT_EQ(exitCode, 0);
}

TEST_F(FringixWatch, ALostConnectionIsAFailure) {
  if (workersAreEndedByForce()) GTEST_SKIP() << "a listener that loses the connection takes the session's lock with it here";
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  server_.stop();
  // The trigger makes the session ask for the serial number.
  EXPECT_EQ(lineAfterTrigger(tool, server_), "fringix: the connection to the head at 127.0.0.1 is lost");
  EXPECT_EQ(tool.wait(), 1);
}

TEST_F(FringixWatch, AHeadThatDoesNotAnswerIsNamed) {
  const Outcome outcome = runProgram(FRINGIX_TOOL, "watch 127.0.0.1 127.0.0.9");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors.find("fringix: no head answers at 127.0.0.9:44330"), 0U) << outcome.errors;
}

TEST_F(FringixWatch, WrongUsageIsTold) {
  for (const char* arguments : {"watch", "watch 127.0.0.1 head", "watch 127.0.0.1 --interval 1", "watch 127.0.0.1 --count 0"}) {
    const Outcome outcome = runProgram(FRINGIX_TOOL, arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
  }
}

}  // namespace
}  // namespace fringix::test
