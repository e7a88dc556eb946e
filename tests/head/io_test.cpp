#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <vector>

#include "head/model/io_lines.h"
#include "head/model/serial_device.h"

namespace fringix::head {
namespace {

class IoLinesTest : public testing::Test {
 protected:
  std::int32_t state(std::int32_t line) {
    std::int32_t state = -1;
    EXPECT_EQ(lines.read(line, state), Status::ok);
    return state;
  }

  IoLines lines;
};

TEST_F(IoLinesTest, EachLineKeepsItsState) {
  for (std::int32_t line = 0; line <= 7; ++line) EXPECT_EQ(state(line), 0) << line;
  EXPECT_EQ(lines.set(7, 1), Status::ok);
  EXPECT_EQ(state(7), 1);
  EXPECT_EQ(state(6), 0);
  EXPECT_EQ(lines.set(7, 0), Status::ok);
  EXPECT_EQ(state(7), 0);
}

TEST_F(IoLinesTest, RefusesOtherLinesAndStates) {
  std::int32_t state = -1;
  EXPECT_EQ(lines.read(8, state), Status::badParameter);
  EXPECT_EQ(state, 0);
  EXPECT_EQ(lines.read(-1, state), Status::badParameter);
  EXPECT_EQ(lines.set(8, 1), Status::badParameter);
  EXPECT_EQ(lines.set(-2147483647 - 1, 1), Status::badParameter);
  EXPECT_EQ(lines.set(0, 2), Status::badParameter);
  EXPECT_EQ(lines.set(0, -1), Status::badParameter);
}

TEST_F(IoLinesTest, OutputsActOnTheirLinesWhenExecuted) {
  EXPECT_EQ(lines.setOutput(2, 1), Status::ok);
  EXPECT_EQ(state(2), 0) << "not before the execution";
  EXPECT_EQ(lines.executeOutput(2), Status::ok);
  EXPECT_EQ(state(2), 1);
  lines.setOutput(2, 2);
  lines.executeOutput(2);
  EXPECT_EQ(state(2), 0);
  lines.executeOutput(2);
  EXPECT_EQ(state(2), 1);
  lines.setOutput(2, 0);
  lines.executeOutput(2);
  EXPECT_EQ(state(2), 0);
}

TEST_F(IoLinesTest, TellsOfEachRiseOnce) {
  std::vector<std::int32_t> rises;
  lines.observeRises([&](std::int32_t line) { rises.push_back(line); });
  lines.set(3, 1);
  lines.set(3, 1);
  lines.set(3, 0);
  lines.set(3, 1);
  lines.setOutput(2, 2);
  lines.executeOutput(2);
  lines.executeOutput(2);
  EXPECT_EQ(rises, (std::vector<std::int32_t>{3, 3, 2}));
}

TEST_F(IoLinesTest, RefusesOtherOutputsAndActions) {
  for (const std::int32_t output : {-1, 4, 7, 2147483647}) {
    EXPECT_EQ(lines.setOutput(output, 0), Status::badParameter) << output;
    EXPECT_EQ(lines.executeOutput(output), Status::badParameter) << output;
  }
  EXPECT_EQ(lines.setOutput(0, 3), Status::badParameter);
  EXPECT_EQ(lines.setOutput(0, -1), Status::badParameter);
}

TEST(SerialScriptTest, ReadsCommandsAndReplies) {
  std::istringstream input("# a rotary table\n\nID? => table 1\r\nGO 90=>ok => done\n  POS?  =>  90  \n");
  const SerialScript expected{{"ID?", "table 1"}, {"GO 90", "ok => done"}, {"POS?", "90"}};
  EXPECT_EQ(parseSerialScript(input), expected);
}

TEST(SerialScriptTest, TellsTheLineThatIsNone) {
  for (const char* text : {"a => b\nc", "a => b\n=> d", "a => b\nc =>", "a => b\nc = d"}) {
    std::istringstream input(text);
    try {
      parseSerialScript(input);
      ADD_FAILURE() << text;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find("line 2"), std::string::npos) << error.what();
    }
  }
}

TEST(SerialDeviceTest, RepeatsEveryCommandWithoutAScript) {
  SerialDevice device({});
  EXPECT_EQ(device.answer("hello\r\n"), "hello\r\n");
  EXPECT_EQ(device.answer(""), "");
}

TEST(SerialDeviceTest, FollowsItsScript) {
  SerialDevice device({{"ID?", "table 1"}, {"POS?", "0"}});
  EXPECT_EQ(device.answer("POS?"), "0");
  EXPECT_EQ(device.answer("ID?\r\n"), "table 1") << "line ends do not count";
  EXPECT_EQ(device.answer("id?"), "");
  EXPECT_EQ(device.answer("\r\n"), "");
}

TEST(SerialDeviceTest, GivesSeveralAnswersInTurn) {
  SerialDevice device({{"POS?", "0"}, {"ID?", "table 1"}, {"POS?", "45"}, {"POS?", "90"}});
  EXPECT_EQ(device.answer("POS?"), "0");
  EXPECT_EQ(device.answer("POS?"), "45");
  EXPECT_EQ(device.answer("ID?"), "table 1");
  EXPECT_EQ(device.answer("POS?"), "90");
  EXPECT_EQ(device.answer("POS?"), "90") << "the last one from then on";
}

}  // namespace
}  // namespace fringix::head
