#include <numeric>
#include <string>

#include "running_head.h"

namespace fringix::head {
namespace {

using Ints = std::vector<std::int32_t>;

constexpr std::int32_t badParameter = -3;
constexpr std::int32_t unknownKey = -21;
constexpr std::int32_t noAnswer = -23;

class PassThroughCommandsTest : public RunningHead {
 protected:
  explicit PassThroughCommandsTest(const HeadSettings& settings = smallHead()) : RunningHead(settings) {}

  void sayTexts(std::initializer_list<std::string> texts) {
    for (const std::string& text : texts) client->sendText(text);
  }

  Ints readIni(const std::string& section, const std::string& key) {
    sayTexts({"82MSG_SLReadIniInt", section, key});
    return receiveInts(2);
  }

  std::int32_t writeIni(const std::string& section, const std::string& key, const std::string& value) {
    sayTexts({"83MSG_SLWriteIniInt", section, key, value});
    return client->receiveInt();
  }

  std::string executeSerial(const std::string& command, std::int32_t expectedStatus) {
    sayTexts({"200MSG_SLRS232Exec", command});
    std::string reply = client->receiveText();
    EXPECT_EQ(client->receiveInt(), expectedStatus);
    return reply;
  }
};

TEST_F(PassThroughCommandsTest, ReadsAndWritesConfigurationValues) {
  EXPECT_EQ(readIni("Head", "SerialNumber"), (Ints{4711, 0}));
  EXPECT_EQ(readIni("Camera", "Width"), (Ints{64, 0}));
  EXPECT_EQ(readIni("Camera", "Depth"), (Ints{0, unknownKey}));
  EXPECT_EQ(writeIni("Mine", "Offset", "-12"), 0);
  EXPECT_EQ(readIni("Mine", "Offset"), (Ints{-12, 0}));
  EXPECT_EQ(writeIni("Head", "SerialNumber", "5"), badParameter);
  EXPECT_EQ(readIni("Head", "SerialNumber"), (Ints{4711, 0}));
  expectInStep();
}

TEST_F(PassThroughCommandsTest, AConfigurationValueIsADecimalNumberOf32Bits) {
  EXPECT_EQ(writeIni("Mine", "a", "2147483647"), 0);
  EXPECT_EQ(writeIni("Mine", "a", "-2147483648"), 0);
  for (const char* text : {"2147483648", "", " 5", "5 ", "0x5", "5.0", "five", "+5"})
    EXPECT_EQ(writeIni("Mine", "a", text), badParameter) << text;
  EXPECT_EQ(readIni("Mine", "a"), (Ints{-2147483647 - 1, 0}));
  expectInStep();
}

TEST_F(PassThroughCommandsTest, LongConfigurationNamesAreRefusedAndReadToTheirEnd) {
  const std::string longest(999999, 'x');
  EXPECT_EQ(readIni(longest, ""), (Ints{0, unknownKey}));
  EXPECT_EQ(writeIni("Mine", longest, "5"), badParameter);
  EXPECT_EQ(writeIni("Mine", "a", longest), badParameter);
  expectInStep();
}

TEST_F(PassThroughCommandsTest, LinesAreSetAndRead) {
  EXPECT_EQ(askInts(2, "84MSG_SLGetGPIOStatus", {7}), (Ints{0, 0}));
  EXPECT_EQ(ask("230MSG_SLSetGPIOValue", {7, 1}), 0);
  EXPECT_EQ(askInts(2, "84MSG_SLGetGPIOStatus", {7}), (Ints{1, 0}));
  EXPECT_EQ(askInts(2, "84MSG_SLGetGPIOStatus", {8}), (Ints{0, badParameter}));
  EXPECT_EQ(askInts(2, "84MSG_SLGetGPIOStatus", {-2147483647 - 1}), (Ints{0, badParameter}));
  EXPECT_EQ(ask("230MSG_SLSetGPIOValue", {-1, 1}), badParameter);
  EXPECT_EQ(ask("230MSG_SLSetGPIOValue", {7, 2}), badParameter);
  expectInStep();
}

TEST_F(PassThroughCommandsTest, OutputsActOnTheirLines) {
  EXPECT_EQ(ask("58MSG_SLSetOutputSettings", {3, 1}), 0);
  EXPECT_EQ(ask("59MSG_SLExecOutput", {3}), 0);
  EXPECT_EQ(askInts(2, "84MSG_SLGetGPIOStatus", {3}), (Ints{1, 0}));
  EXPECT_EQ(ask("58MSG_SLSetOutputSettings", {4, 1}), badParameter);
  EXPECT_EQ(ask("58MSG_SLSetOutputSettings", {3, 3}), badParameter);
  EXPECT_EQ(ask("59MSG_SLExecOutput", {2147483647}), badParameter);
  expectInStep();
}

TEST_F(PassThroughCommandsTest, TheSerialPortRepeatsACommand) {
  EXPECT_EQ(executeSerial("hello", 0), "hello");
  EXPECT_EQ(executeSerial(std::string(999999, 's'), 0), std::string(999999, 's'));
  EXPECT_EQ(executeSerial("", noAnswer), "?") << "a reply is never empty";
  expectInStep();
}

TEST_F(PassThroughCommandsTest, ProjectorCommands) {
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {1, 0}), (Ints{1, 0, 0, 0}));
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {2, 0}), (Ints{3, 22, 100, 0}));
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {3, 77}), (Ints{77, 0, 0, 0}));
  EXPECT_EQ(ask("50MSG_SLGetLEDPower"), 77);
}

TEST_F(PassThroughCommandsTest, ProjectorTestPatterns) {
  const auto mean = [this] {
    const auto bytes = askBytes(frameBytes, "41MSG_SLGetLiveImage");
    return std::accumulate(bytes.begin(), bytes.end(), 0.0) / frameBytes;
  };
  const double white = mean();
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 1}), (Ints{1, 0, 0, 0}));
  EXPECT_LT(mean(), white / 3);
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 3}), (Ints{3, 0, 0, 0}));
  EXPECT_NEAR(mean(), white / 2, white / 5);
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 0}), (Ints{0, 0, 0, 0}));
  EXPECT_NEAR(mean(), white, 1);
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {4, 4}), (Ints{0, 0, 0, badParameter}));
}

TEST_F(PassThroughCommandsTest, RefusesOtherProjectorCommands) {
  for (const std::int32_t code : {0, 5, 255, 257, -1})
    EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {code, 0}), (Ints{0, 0, 0, badParameter})) << code;
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {3, 256}), (Ints{0, 0, 0, badParameter}));
  EXPECT_EQ(askInts(4, "310MSG_EXEC_PROJCMD", {3, -1}), (Ints{0, 0, 0, badParameter}));
  EXPECT_EQ(ask("50MSG_SLGetLEDPower"), 100);
}

class ScriptedSerialTest : public PassThroughCommandsTest {
 protected:
  ScriptedSerialTest() : PassThroughCommandsTest(scripted()) {}

  static HeadSettings scripted() {
    HeadSettings settings = smallHead();
    settings.serialScript = {{"POS?", "0"}, {"POS?", "90"}};
    return settings;
  }
};

TEST_F(ScriptedSerialTest, TheDeviceFollowsItsScript) {
  EXPECT_EQ(executeSerial("POS?\r\n", 0), "0");
  EXPECT_EQ(executeSerial("POS?", 0), "90");
  EXPECT_EQ(executeSerial("STOP", noAnswer), "?");
  expectInStep();
}

}  // namespace
}  // namespace fringix::head
