// The program fringix-head, as people and scripts use it.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "host.h"
#include "raw_client.h"
#include "support/child_process.h"

namespace fringix::head {
namespace {

using test::ChildProcess;
using test::Input;

// A running program whose heads can be connected to.
struct RunningProgram {
  explicit RunningProgram(std::vector<std::string> arguments, Input input = Input::pipe) : process(FRINGIX_HEAD, small(arguments), input) {
    EXPECT_NE(process.waitForLine("ready:"), "");
  }

  static std::vector<std::string> small(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--camera", "64x48", "--projector", "32x20"});
    return arguments;
  }

  std::string answer(const std::string& line) {
    process.write(line + "\n");
    return process.nextLine().value_or("nothing");
  }

  ChildProcess process;
};

const std::string help =
    "\"trigger\" raises a GPIO trigger of each head, \"trigger N\" of the N-th head, 1 to 2; \"scene NAME\" puts another scene before all "
    "of them; \"fault FAULT\" makes all of them do something wrong, \"fault none\" ends that, \"fault list\" tells what is set";

TEST(HeadProgramTest, TriggerOnStandardInputIsATriggerOfEachHead) {
  Host host;
  RunningProgram program({"--heads", "2"});
  EXPECT_EQ(program.answer("trigger"), "head 1001  trigger");
  EXPECT_EQ(program.process.nextLine(), "head 1002  trigger");
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_EQ(host.next(), "127.0.0.3: 02UDP_GPIO");
}

TEST(HeadProgramTest, ANumberChoosesTheHead) {
  Host host;
  RunningProgram program({"--heads", "2"});
  EXPECT_EQ(program.answer("trigger 2"), "head 1002  trigger");
  EXPECT_EQ(program.answer("  trigger\t1 \r"), "head 1001  trigger");
  EXPECT_EQ(host.next(), "127.0.0.3: 02UDP_GPIO");
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
}

TEST(HeadProgramTest, OtherLinesGetHelpAndRaiseNothing) {
  const Host host;
  RunningProgram program({"--heads", "2"});
  for (const char* line : {"help", "trigger 0", "trigger 3", "trigger -1", "trigger 1 2", "trigger2", "triggers", "TRIGGER", "\ntrigger x"})
    EXPECT_EQ(program.answer(line), help) << line;
  EXPECT_EQ(program.answer(std::string(100000, 'x')), help);
  EXPECT_FALSE(host.hearsMore());
}

TEST(HeadProgramTest, ALineChangesTheSceneOfAllHeads) {
  RunningProgram program({"--heads", "2", "--scene", "sphere:2"});
  EXPECT_EQ(program.answer("scene ballbar:3"), "head 1001  scene ballbar:3");
  EXPECT_EQ(program.process.nextLine(), "head 1002  scene ballbar:3");
  EXPECT_EQ(program.answer("scene ballbar:8").find("there is no scene \"ballbar:8\": give default, "), 0U);
  EXPECT_EQ(program.answer("scene"), help);
}

TEST(HeadProgramTest, FaultsAreSwitchedOnAndOffByLines) {
  RunningProgram program({"--heads", "2", "--fault", "always,once:drip", "--fault", "random:1:0.5"});
  EXPECT_EQ(program.answer("fault list"), "head 1001  fault always,once:drip (not struck yet)");
  EXPECT_EQ(program.process.nextLine(), "head 1001  fault random:1:0.5 (not struck yet)");
  EXPECT_EQ(program.process.nextLine(), "head 1002  fault always,once:drip (not struck yet)");
  EXPECT_EQ(program.process.nextLine(), "head 1002  fault random:1:0.5 (not struck yet)");
  EXPECT_EQ(program.answer("fault none"), "head 1001  no fault");
  EXPECT_EQ(program.process.nextLine(), "head 1002  no fault");
  EXPECT_EQ(program.answer("fault always: cut"), "head 1001  fault always: cut");
  EXPECT_EQ(program.process.nextLine(), "head 1002  fault always: cut");
  RawClient client;
  client.greet();
  client.sendText("21MSG_SLGetSerial");
  EXPECT_TRUE(client.closedByHead());
  EXPECT_EQ(program.answer("fault list"), "head 1001  fault always: cut (struck once)");
  EXPECT_EQ(program.process.nextLine(), "head 1002  fault always: cut (not struck yet)");
  EXPECT_EQ(program.answer("fault allways: cut"),
            R"(fault: "allways: cut": expected always, at, after or random at character 1, not "allways", did you mean "always"?)");
  EXPECT_EQ(program.answer("fault"), help);
}

TEST(HeadProgramTest, AFaultThatStrikesIsPrintedOnDemand) {
  RunningProgram program({"--verbose", "--fault", "always,once:cut"});
  RawClient client;
  client.greet();
  client.sendText("21MSG_SLGetSerial");
  EXPECT_TRUE(program.process.waitForLine("fault: ").ends_with("  fault: always,once:cut"));
}

TEST(HeadProgramTest, AFaultThatMeansNothingIsRefused) {
  ChildProcess process(FRINGIX_HEAD, {"--fault", "random:1"});
  EXPECT_EQ(process.nextLine(), R"(--fault: "random:1": expected random:SEED:RATE at the end)");
  EXPECT_EQ(process.wait(), 2);
}

TEST(HeadProgramTest, ASceneThatThereIsNotIsToldWithWhatThereIs) {
  ChildProcess process(FRINGIX_HEAD, {"--scene", "castle"});
  EXPECT_EQ(process.nextLine().value_or("").find("fringix-head: there is no scene \"castle\": give default, "), 0U);
  EXPECT_EQ(process.wait(), 1);
}

TEST(HeadProgramTest, ImperfectionsHaveLimits) {
  for (const auto& [option, value] :
       {std::pair{"--gamma", "0"}, {"--shot-noise", "-1"}, {"--defocus", "21"}, {"--seed", "-1"}, {"--ambient", "nan"}}) {
    ChildProcess process(FRINGIX_HEAD, {option, value});
    EXPECT_NE(process.nextLine().value_or("").find(option), std::string::npos) << option;
    EXPECT_EQ(process.wait(), 2) << option;
  }
}

TEST(HeadProgramTest, TheEndOfInputEndsNoHead) {
  for (const Input input : {Input::nullDevice, Input::closed}) {
    Host host;
    const RunningProgram program({"--trigger-every", "20ms"}, input);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  }
}

TEST(HeadProgramTest, ALastLineNeedsNoEnd) {
  Host host;
  RunningProgram program({});
  program.process.write("trigger");
  program.process.closeInput();
  EXPECT_EQ(program.process.nextLine(), "head 1001  trigger");
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
}

TEST(HeadProgramTest, TriggersComeInTime) {
  Host host;
  const RunningProgram program({"--heads", "2", "--trigger-every", "50ms"});
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 12; ++i) {
    EXPECT_EQ(host.next(), "127.0.0.3: 02UDP_GPIO");
    EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  }
  // 600 ms, less what a busy machine was late in hearing the first.
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
}

TEST(HeadProgramTest, AnIntervalNeedsASense) {
  for (const char* text : {"2h", "0s", "0.5ms", "-1s", "25000min", "s", "nans", "2s2"}) {
    ChildProcess process(FRINGIX_HEAD, {"--trigger-every", text});
    EXPECT_EQ(process.nextLine(),
              "--trigger-every: \"" + std::string(text) + "\" is no time such as 1s, 500ms or 2min, from 1ms to 1440min")
        << text;
    EXPECT_EQ(process.wait(), 2) << text;
  }
}

TEST(HeadProgramTest, EveryHeadNeedsANumberAnAddressAndAModel) {
  for (const auto& [arguments, complaint] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--model", "3"}, "--model: \"3\" is no number from 0 to 2"},
           {{"--serial", "-1"}, "--serial: \"-1\" is no number from 0 to 2147483647"},
           {{"--serial", "2147483647", "--heads", "2"}, "--serial: 2147483647 leaves no numbers for 2 heads"},
           {{"--address", "255.255.255.254", "--heads", "3"}, "--address: 255.255.255.254 leaves no addresses for 3 heads"},
           {{"--clients", "0"}, "--clients: \"0\" is no number from 1 to 10000"}}) {
    ChildProcess program(FRINGIX_HEAD, arguments);
    EXPECT_EQ(program.nextLine(), complaint);
    EXPECT_EQ(program.wait(), 2);
  }
}

TEST(HeadProgramTest, AClientMoreThanAllowedIsClosed) {
  RunningProgram program({"--clients", "1"});
  RawClient first("127.0.0.2");
  first.greet();
  RawClient second("127.0.0.2");
  EXPECT_TRUE(second.closedByHead());
}

TEST(HeadProgramTest, AnUnknownFaultOfAnswersIsRefused) {
  ChildProcess process(FRINGIX_HEAD, {"--announce-fault", "loud"});
  EXPECT_EQ(process.nextLine(), "--announce-fault: \"loud\" is no fault of an answer: give silent, late, doubled, malformed or oversized");
  EXPECT_EQ(process.wait(), 2);
}

// What clients say may be meant for the terminal: an escape sequence, or a line that the head never wrote.
TEST(HeadProgramTest, TextOfClientsIsPrintedWithoutItsControlCharacters) {
  RunningProgram program({});
  RawClient client;
  client.greet();
  client.sendText("\x1B]0;owned\x07\r\nready:\x9B\\");
  EXPECT_TRUE(program.process.waitForLine("connection closed: ")
                  .ends_with(R"(connection closed: unknown command "\x1B]0;owned\x07\x0D\x0Aready:\x9B\x5C")"));
}

TEST(HeadProgramTest, CtrlCEndsItWhileItWaitsForALine) {
  RunningProgram program({});
  if (!program.process.interrupt()) GTEST_SKIP() << "no program can press Ctrl-C for another one here";
  EXPECT_EQ(program.process.wait(), 0);
}

}  // namespace
}  // namespace fringix::head
