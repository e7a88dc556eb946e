// The built program watching heads whose triggers the test raises.
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "application.h"
#include "head/serving/head_server.h"
#include "platform/socket.h"
#include "probed.h"
#include "program.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/json.h"
#include "support/pattern.h"
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

  static std::string line(const std::string& address, int serial) {
    return "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}  " + address + " +head " + std::to_string(serial) + "  trigger";
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
    EXPECT_TRUE(matches(printed, line("127\\.0\\.0\\.3", 4712))) << printed;
  }
  server_.raiseTrigger();
  const std::string printed = tool.waitForLine("127.0.0.1");  // a follower on Windows may tell one trigger twice
  EXPECT_TRUE(matches(printed, line("127\\.0\\.0\\.1", 4711))) << printed;
}

TEST_F(FringixWatch, PrintsLinesOfJson) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "--json", "127.0.0.1"});
  EXPECT_EQ(tool.nextLine(), R"({"state":"watching","heads":1})");
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
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  server_.stop();
  const std::string news = tool.nextLine().value_or("nothing");
  EXPECT_NE(news.find("  127.0.0.1        lost: it refuses connections, so its program does not run"), std::string::npos) << news;
  EXPECT_EQ(tool.nextLine(), "fringix: the connection to the head at 127.0.0.1 is lost");
  EXPECT_EQ(tool.wait(), 1);
}

TEST_F(FringixWatch, GoesOnWithTheOthers) {
  head::HeadServer second(secondHead());
  second.start();
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1", "127.0.0.3", "--count", "1"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  server_.stop();
  EXPECT_NE(tool.waitForLine("  127.0.0.1        lost"), "");
  const std::string printed = lineAfterTrigger(tool, second);
  EXPECT_TRUE(matches(printed, line("127\\.0\\.0\\.3", 4712))) << printed;
  EXPECT_NE(tool.waitForLine("fringix: the connection to the head at 127.0.0.1 is lost"), "") << "also at the end";
  EXPECT_EQ(tool.wait(), 1);
}

TEST_F(FringixWatch, ComesBackToAHeadThatDoes) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1", "--reconnect", "--count", "1"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  server_.stop();
  EXPECT_NE(tool.waitForLine("  127.0.0.1        lost"), "");
  server_.start();
  EXPECT_NE(tool.waitForLine("  127.0.0.1        back: after "), "");
  const std::string printed = lineAfterTrigger(tool, server_);
  EXPECT_TRUE(matches(printed, line("127\\.0\\.0\\.1", 4711))) << printed;
  EXPECT_EQ(tool.wait(), 0);
}

TEST_F(FringixWatch, WaitsForAHeadThatIsNotThere) {
  server_.stop();
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.1", "--reconnect", "--json", "--count", "1"});
  EXPECT_EQ(Json(tool.nextLine().value_or("null")).at("/state").text(), "missing");
  EXPECT_NE(tool.waitForLine("watching"), "");
  server_.start();
  EXPECT_NE(tool.waitForLine(R"("state":"back")"), "");
  EXPECT_NE(lineAfterTrigger(tool, server_), "nothing");
  EXPECT_EQ(tool.wait(), 0);
}

// The library waits 30 seconds for its answer.
class FringixWatchOfFrozenHead : public FringixWatch {
 protected:
  static Script upToTheFirstQuestion() {
    return opening() + Script{expect(text("21MSG_SLGetSerial")), reply(integer(4713)), expect(text("20MSG_SLGetProtocolVersion")),
                              reply(integer(3300)), stall()};
  }

  ScriptedHead frozen_{probed(upToTheFirstQuestion()), "127.0.0.5"};
};

TEST_F(FringixWatchOfFrozenHead, IsToldWithin10SecondsWhileOthersGoOn) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.5", "127.0.0.1"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_NE(lineAfterTrigger(tool, server_), "nothing");
  const std::string news = tool.waitForLine("127.0.0.5");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_NE(news.find("  127.0.0.5        does not answer: it accepts connections, but does not greet, so it is frozen"), std::string::npos)
      << news;
  EXPECT_NE(lineAfterTrigger(tool, server_), "nothing");
}

TEST_F(FringixWatchOfFrozenHead, CtrlCEndsItAtOnce) {
  ChildProcess tool(FRINGIX_TOOL, {"watch", "127.0.0.5"});
  EXPECT_NE(tool.waitForLine("watching"), "");
  EXPECT_NE(tool.waitForLine("does not answer"), "");
  const auto begin = std::chrono::steady_clock::now();
  if (!tool.interrupt()) GTEST_SKIP() << "no program can press Ctrl-C for another one here";
  EXPECT_EQ(tool.wait(), 1) << "a head is missing";
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(FringixWatch, AHeadThatDoesNotAnswerIsNamed) {
  const Outcome outcome = runProgram(FRINGIX_TOOL, "watch 127.0.0.1 127.0.0.9");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors.find("fringix: 127.0.0.9:44330 refuses the connection"), 0U) << outcome.errors;
}

TEST_F(FringixWatch, SaysWhenAnotherProgramHasTheTriggerPort) {
  const platform::SocketLibrary library;
  platform::Socket stranger = platform::Socket::openDatagram();
  ASSERT_TRUE(stranger.bind({0, 44331}));
  const Outcome outcome = runProgram(FRINGIX_TOOL, "watch 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  const bool named = outcome.errors.starts_with("fringix: triggers cannot arrive: \"fringix-tool-te");
  EXPECT_TRUE(named || outcome.errors.starts_with("fringix: triggers cannot arrive: a program has")) << outcome.errors;
  EXPECT_NE(outcome.errors.find(" has UDP port 44331\n"), std::string::npos) << outcome.errors;
}

TEST_F(FringixWatch, SharesTheTriggerPortWithAnotherOne) {
  ChildProcess first(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  EXPECT_NE(first.waitForLine("watching"), "");
  ChildProcess second(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  EXPECT_EQ(second.nextLine(), "watching 1 head, end with Ctrl-C");
  EXPECT_NE(lineAfterTrigger(second, server_), "nothing");
}

TEST_F(FringixWatch, WrongUsageIsTold) {
  for (const char* arguments : {"watch", "watch 127.0.0.1 127.0.0.256", "watch 127.0.0.1 --interval 1", "watch 127.0.0.1 --count 0"}) {
    const Outcome outcome = runProgram(FRINGIX_TOOL, arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
  }
}

}  // namespace
}  // namespace fringix::test
