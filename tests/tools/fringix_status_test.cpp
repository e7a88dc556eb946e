// The built program asking a head for everything that it can tell, and setting what can be set.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

#include "application.h"
#include "head/serving/head_server.h"
#include "probed.h"
#include "program.h"
#include "small_head.h"
#include "support/json.h"
#include "support/pattern.h"
#include "support/scripted_head.h"

namespace fringix::test {
namespace {

Outcome fringixTool(const std::string& arguments) { return runProgram(FRINGIX_TOOL, arguments); }

class FringixStatus : public testing::Test {
 protected:
  FringixStatus() { server_.start(); }

  head::Controls& controls() { return server_.model().controls(); }
  std::string failure(const std::string& arguments) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    return outcome.errors;
  }

  head::HeadServer server_{smallHead()};
};

// The head gets warm and time goes by: those lines are told by the JSON.
std::string withoutDriftingValues(std::string table) {
  for (const char* label : {"uptime ", "temperature ", "projector temperature "}) {
    const std::size_t begin = table.find(std::string("\n") + label) + 1;
    table.erase(begin, table.find('\n', begin) + 1 - begin);
  }
  return table;
}

TEST_F(FringixStatus, IsATable) {
  controls().setLedPower(120);
  controls().setGain(15);
  const Outcome outcome = fringixTool("status 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(withoutDriftingValues(outcome.output),
            "head                   127.0.0.1\n"
            "serial number          4711\n"
            "protocol version       3300\n"
            "self-check             0\n"
            "projector status       3\n"
            "LED power              120 (10 to 200)\n"
            "brightness             10 (1 to 10)\n"
            "gain                   15 (10 to 100)\n"
            "exposure               20000 us\n"
            "camera channels        2\n");
}

TEST_F(FringixStatus, AsJsonHasTheNamesThatGetTakes) {
  const Outcome outcome = fringixTool("status 127.0.0.1 --json");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Json status(outcome.output);
  EXPECT_EQ(status.at("/serial").number(), 4711);
  EXPECT_EQ(status.at("/values/led-power"), Json(R"({"value": 100, "min": 10, "max": 200})"));
  for (const std::string& name : status.at("/values").names()) {
    const Outcome one = fringixTool("get 127.0.0.1 " + name);
    EXPECT_EQ(one.exitCode, 0) << name << one.errors;
    if (name == "uptime" || name.find("temperature") != std::string::npos) continue;
    EXPECT_EQ(one.output, status.at("/values/" + name + "/value").dump() + "\n") << name;
  }
  EXPECT_GE(status.at("/values/temperature/value").number(), 15);
  EXPECT_GE(status.at("/values/uptime/value").number(), 0);
}

// One version below, each value is missing and says what it needs; at that version it is there.
class FringixStatusOfOldHead : public testing::TestWithParam<std::pair<const char*, std::int32_t>> {};

TEST_P(FringixStatusOfOldHead, ShowsADashWithTheReason) {
  const auto [name, needed] = GetParam();
  const std::string reason = "needs protocol version " + std::to_string(needed);
  for (const std::int32_t version : {needed - 1, needed}) {
    head::HeadServer server(smallHead(version));
    server.start();
    const Json reading = Json(fringixTool("status 127.0.0.1 --json").output).at(std::string("/values/") + name);
    EXPECT_EQ(reading.at("/value").dump() == "null", version < needed) << reading;
    EXPECT_EQ(reading.has("/reason") ? reading.at("/reason").text() : "", version < needed ? reason : "");
    const Outcome one = fringixTool(std::string("get 127.0.0.1 ") + name);
    EXPECT_EQ(one.exitCode, version < needed ? 1 : 0);
    EXPECT_EQ(one.errors.find("SLVERSION_TOO_OLD, -40") != std::string::npos, version < needed) << one.errors;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, FringixStatusOfOldHead,
                         testing::Values(std::pair{"uptime", 2800}, std::pair{"temperature", 2400},
                                         std::pair{"projector-temperature", 3000}, std::pair{"projector-status", 3000},
                                         std::pair{"exposure", 3100}, std::pair{"channels", 2600}));

TEST(FringixStatusTable, OldHeadHasDashes) {
  head::HeadServer server(smallHead(2300));
  server.start();
  const Outcome outcome = fringixTool("status 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_NE(outcome.output.find("\ntemperature            - (needs protocol version 2400)\n"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("\nLED power              100 (10 to 200)\n"), std::string::npos) << outcome.output;
}

TEST(FringixStatusFailure, ConnectionThatBreaksOnTheWayIsAFailure) {
  ScriptedHead head(probed(opening() + Script{expect(text("21MSG_SLGetSerial")), cut()}));
  const Outcome outcome = fringixTool("status 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_NE(outcome.errors.find("(SLCONNECTION_ERROR, -10)"), std::string::npos) << outcome.errors;
  EXPECT_TRUE(head.received().ends_with(text("21MSG_SLGetSerial"))) << "the break came earlier: " << readable(head.received());
}

// Tells when a head was asked for its temperature, as once in every status.
class StatusCount {
 public:
  head::Observer observer() {
    return [this](head::Happening, const std::string&, const std::string& text) {
      if (text.find("47MSG_SLGetTemperature") == std::string::npos) return;
      const std::lock_guard lock(mutex_);
      ++count_;
      changed_.notify_all();
    };
  }
  bool waitFor(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), [&] { return count_ >= count; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int count_ = 0;
};

TEST(FringixStatusWatch, ShowsItAgainUntilTheHeadIsGone) {
  StatusCount count;
  head::HeadServer server(smallHead(), count.observer());
  server.start();
  Outcome outcome;
  std::thread watching([&] { outcome = fringixTool("status 127.0.0.1 --json --watch 10ms"); });
  EXPECT_TRUE(count.waitFor(4));
  server.stop();
  watching.join();
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("(SLCONNECTION_ERROR, -10)"), std::string::npos) << outcome.errors;
  EXPECT_GE(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 3) << "one line each time";
  EXPECT_EQ(Json(outcome.output.substr(0, outcome.output.find('\n'))).at("/serial").number(), 4711);
}

TEST(FringixStatusWatch, EndsWithCtrlC) {
  StatusCount count;
  head::HeadServer server(smallHead(), count.observer());
  server.start();
  std::atomic<int> exitCode = -1;
  std::thread watching([&] {
    const char* arguments[] = {"fringix", "status", "127.0.0.1", "--watch", "10s"};
    exitCode = tool::run(5, arguments);
  });
  if (count.waitFor(1)) std::raise(SIGINT);
  watching.join();
  EXPECT_EQ(exitCode, 0);
}

TEST_F(FringixStatus, ValuesHaveTheirUnits) {
  const Outcome table = fringixTool("status 127.0.0.1");
  for (const char* line : {"\nuptime +\\d+ s\n", "\ntemperature +\\d+ degC\n", "\nprojector temperature +\\d+ degC\n"})
    EXPECT_TRUE(contains(table.output, line)) << line << table.output;
  const Json values = Json(fringixTool("status 127.0.0.1 --json").output).at("/values");
  EXPECT_EQ(values.at("/exposure/unit").text(), "us");
  EXPECT_FALSE(values.has("/gain/unit"));
  EXPECT_EQ(Json(fringixTool("get 127.0.0.1 exposure --json").output), Json(R"({"name": "exposure", "value": 20000, "unit": "us"})"));
}

TEST_F(FringixStatus, SetChangesWhatGetTells) {
  for (const char* change : {"led-power 150", "brightness 3", "gain 40"}) {
    const Outcome outcome = fringixTool(std::string("set 127.0.0.1 ") + change);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output + outcome.errors, "");
  }
  EXPECT_EQ(controls().ledPower(), 150);
  EXPECT_EQ(controls().brightnessLevel(), 2) << "levels count from 1 for people, from 0 in the head";
  EXPECT_EQ(controls().gain(), 40);
  EXPECT_EQ(fringixTool("get 127.0.0.1 brightness").output, "3\n");
}

TEST_F(FringixStatus, DirectLedPowerGoesPastTheRange) {
  EXPECT_EQ(fringixTool("set 127.0.0.1 direct-led-power 255").exitCode, 0);
  EXPECT_EQ(controls().ledPower(), 255);
  EXPECT_EQ(fringixTool("set 127.0.0.1 direct-led-power 256").exitCode, 2) << "one byte crosses";
  EXPECT_EQ(controls().ledPower(), 255);
}

TEST_F(FringixStatus, DmdIsSwitched) {
  EXPECT_EQ(fringixTool("set 127.0.0.1 dmd 0").exitCode, 0);
  EXPECT_EQ(server_.model().projectorStatus() & head::dmdIsOn, 0);
}

TEST_F(FringixStatus, RefusedValueIsToldWithRangeAndHint) {
  EXPECT_EQ(failure("set 127.0.0.1 led-power 300"),
            "fringix: LED power 300 is refused: this head takes 10 to 200 (SLBAD_PARAMETER, -3)\n"
            "  \"fringix get 127.0.0.1 led-power\" shows the present value, which stays.\n");
  EXPECT_EQ(failure("set 127.0.0.1 gain 9").find("fringix: gain 9 is refused: this head takes 10 to 100 ("), 0U);
  EXPECT_EQ(failure("set 127.0.0.1 brightness 11").find("fringix: brightness 11 is refused: this head takes 1 to 10 ("), 0U);
}

TEST_F(FringixStatus, RefusedValueWithoutRangeIsToldWithItsMeaning) {
  EXPECT_EQ(failure("set 127.0.0.1 dmd 7"),
            "fringix: DMD state 7 is refused (SLSYSTEM_ERROR, -4)\n"
            "  dmd is: state of the projector's mirrors; the simulated head takes 0, off, and 1, on. Which numbers it takes is the "
            "head's business.\n");
}

TEST(FringixValues, WrongUsageIsToldWithoutAskingTheHead) {
  const auto complaint = [](const char* arguments) {
    const Outcome outcome = fringixTool(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << arguments;
    return outcome.errors.substr(0, outcome.errors.find('\n'));
  };
  EXPECT_EQ(complaint("get 127.0.0.1 colour"), "fringix: NAME: there is no value \"colour\"");
  EXPECT_EQ(complaint("get 127.0.0.1 gian"), "fringix: NAME: there is no value \"gian\", did you mean \"gain\"?");
  EXPECT_EQ(complaint("get 127.0.0.1 dmd"), "fringix: NAME: \"dmd\" can only be set");
  EXPECT_EQ(complaint("set 127.0.0.1 exposure 5000"),
            "fringix: NAME: \"exposure\" is part of the configuration: \"fringix ini write ADDRESS Camera Exposure VALUE\" sets it");
  EXPECT_EQ(complaint("set 127.0.0.1 uptime 1"), "fringix: NAME: \"uptime\" can only be read");
  for (const char* time : {"s", "0s", "0", "1h", "1.2.3s", ""}) complaint(("status 127.0.0.1 --watch=" + std::string(time)).c_str());
  complaint("set 127.0.0.1 gain high");
}

TEST(FringixValues, HelpListsThem) {
  const std::string get = fringixTool("get --help").output;
  EXPECT_NE(get.find("\n  led-power "), std::string::npos) << get;
  EXPECT_EQ(get.find("\n  dmd "), std::string::npos) << get;
  const std::string set = fringixTool("set --help").output;
  EXPECT_NE(set.find("\n  dmd "), std::string::npos) << set;
  EXPECT_EQ(set.find("\n  uptime "), std::string::npos) << set;
}

}  // namespace
}  // namespace fringix::test
