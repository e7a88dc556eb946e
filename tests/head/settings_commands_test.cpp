#include <numeric>

#include "manual_clock.h"
#include "running_head.h"

namespace fringix::head {
namespace {

using Ints = std::vector<std::int32_t>;

constexpr std::int32_t badParameter = -3;

struct Time {
  ManualClock time;
};

// The clock comes first: it outlives the head.
class SettingsCommandsTest : protected Time, public RunningHead {
 protected:
  SettingsCommandsTest() : RunningHead(goingBy(time)) {}

  static HeadSettings goingBy(ManualClock& time) {
    HeadSettings settings = smallHead();
    settings.clock = time.clock();
    settings.noise = 0;
    return settings;
  }

  double liveMean() {
    const auto bytes = askBytes(frameBytes, "41MSG_SLGetLiveImage");
    return std::accumulate(bytes.begin(), bytes.end(), 0.0) / frameBytes;
  }

  std::int32_t setMask(std::initializer_list<std::int32_t> arguments, const std::vector<std::uint8_t>& mask) {
    say("290MSG_SLSetMask", arguments);
    client->sendBytes(mask);
    return client->receiveInt();
  }
};

TEST_F(SettingsCommandsTest, LedPower) {
  EXPECT_EQ(askInts(2, "46MSG_SLGetProjPowMinMax"), (Ints{10, 200})) << "least, then most";
  EXPECT_EQ(ask("50MSG_SLGetLEDPower"), 100);
  EXPECT_EQ(ask("51MSG_SLSetLEDPower", {200}), 0);
  EXPECT_EQ(ask("51MSG_SLSetLEDPower", {201}), badParameter);
  EXPECT_EQ(ask("50MSG_SLGetLEDPower"), 200);
  EXPECT_EQ(ask("320MSG_SET_DIRECT_LEDPOWER", {255}), 0);
  EXPECT_EQ(ask("50MSG_SLGetLEDPower"), 255);
  EXPECT_EQ(ask("320MSG_SET_DIRECT_LEDPOWER", {256}), badParameter);
  expectInStep();
}

TEST_F(SettingsCommandsTest, BrightnessLevelsCountFromZero) {
  EXPECT_EQ(askInts(2, "54MSG_SLGetBrightnessMinMax"), (Ints{9, 0})) << "most, then least";
  EXPECT_EQ(ask("53MSG_SLGetBrightness"), 9);
  EXPECT_EQ(ask("52MSG_SLSetBrightness", {0}), 0);
  EXPECT_EQ(ask("53MSG_SLGetBrightness"), 0);
  EXPECT_EQ(ask("52MSG_SLSetBrightness", {-1}), badParameter);
  EXPECT_EQ(ask("52MSG_SLSetBrightness", {10}), badParameter);
  expectInStep();
}

TEST_F(SettingsCommandsTest, Gain) {
  EXPECT_EQ(askInts(2, "57MSG_SLGetGainMinMax"), (Ints{100, 10})) << "most, then least";
  EXPECT_EQ(ask("56MSG_SLGetGain"), 10);
  EXPECT_EQ(ask("55MSG_SLSetGain", {100}), 0);
  EXPECT_EQ(ask("55MSG_SLSetGain", {0}), badParameter);
  EXPECT_EQ(ask("55MSG_SLSetGain", {-2147483647 - 1}), badParameter);
  EXPECT_EQ(ask("56MSG_SLGetGain"), 100);
  expectInStep();
}

TEST_F(SettingsCommandsTest, SettingsActOnLivePictures) {
  const double usual = liveMean();
  ask("51MSG_SLSetLEDPower", {50});
  const double dimmed = liveMean();
  EXPECT_LT(dimmed, 0.7 * usual);
  ask("52MSG_SLSetBrightness", {0});
  EXPECT_LT(liveMean(), 0.7 * dimmed);
  ask("55MSG_SLSetGain", {100});
  EXPECT_GT(liveMean(), usual);
}

TEST_F(SettingsCommandsTest, WithoutDmdPicturesAreDark) {
  const double usual = liveMean();
  EXPECT_EQ(ask("250MSG_SLSETDMDSTATE", {0}), 0);
  EXPECT_LT(liveMean(), usual / 3);
  EXPECT_EQ(ask("250MSG_SLSETDMDSTATE", {2}), badParameter);
  EXPECT_EQ(ask("250MSG_SLSETDMDSTATE", {-1}), badParameter);
  EXPECT_EQ(ask("270MSG_SLGETPROJTEMP"), 1) << "the LED is on, the DMD is off";
  EXPECT_EQ(ask("250MSG_SLSETDMDSTATE", {1}), 0);
  EXPECT_NEAR(liveMean(), usual, 1);
}

TEST_F(SettingsCommandsTest, AMaskDarkensUntilItIsCleared) {
  const double usual = liveMean();
  EXPECT_EQ(setMask({0, 32, 20}, std::vector<std::uint8_t>(640, 0)), 0);
  const double masked = liveMean();
  EXPECT_LT(masked, usual / 3);
  EXPECT_EQ(ask("270MSG_SLGETPROJTEMP"), 7);
  say("300MSG_SLClearMask");
  EXPECT_NEAR(liveMean(), usual, 1) << "and the clearing had no answer";
  EXPECT_EQ(ask("270MSG_SLGETPROJTEMP"), 3);
}

TEST_F(SettingsCommandsTest, AMaskIsGradedOrOnlyLightAndDark) {
  const double usual = liveMean();
  EXPECT_EQ(setMask({0, 32, 20}, std::vector<std::uint8_t>(640, 1)), 0);
  EXPECT_LT(liveMean(), usual / 3);
  EXPECT_EQ(setMask({1, 32, 20}, std::vector<std::uint8_t>(640, 1)), 0);
  EXPECT_NEAR(liveMean(), usual, 1);
}

TEST_F(SettingsCommandsTest, ReadsARefusedMaskToItsEnd) {
  EXPECT_EQ(setMask({0, 31, 20}, std::vector<std::uint8_t>(620, 0)), badParameter);
  EXPECT_EQ(setMask({0, 20, 32}, std::vector<std::uint8_t>(640, 0)), badParameter);
  EXPECT_EQ(setMask({2, 32, 20}, std::vector<std::uint8_t>(640, 0)), badParameter);
  EXPECT_EQ(setMask({-1, 32, 20}, std::vector<std::uint8_t>(640, 0)), badParameter);
  EXPECT_EQ(setMask({0, 0, 20}, {}), badParameter);
  EXPECT_EQ(setMask({0, -1, -5}, std::vector<std::uint8_t>(5, 0)), badParameter) << "the product is 5";
  EXPECT_EQ(setMask({0, 65536, 65536}, {}), badParameter) << "the product is 0 in 32 bits";
  EXPECT_EQ(ask("270MSG_SLGETPROJTEMP"), 3);
  expectInStep();
}

TEST_F(SettingsCommandsTest, StatusChangesWithTimeAndLight) {
  EXPECT_EQ(askInts(2, "47MSG_SLGetTemperature"), (Ints{22, 0}));
  EXPECT_EQ(ask("260MSG_SLGETPROJTEMP"), 22);
  EXPECT_EQ(ask("240MSG_SLGETUPTIME"), 0);
  ask("320MSG_SET_DIRECT_LEDPOWER", {255});
  time.advance(std::chrono::hours(5));
  EXPECT_EQ(ask("240MSG_SLGETUPTIME"), 18000);
  EXPECT_EQ(askInts(2, "47MSG_SLGetTemperature"), (Ints{61, 0}));
  EXPECT_EQ(ask("260MSG_SLGETPROJTEMP"), 91);
  EXPECT_EQ(ask("270MSG_SLGETPROJTEMP"), 11);
  EXPECT_EQ(ask("30MSG_SLCheckSystem"), 3);
  expectInStep();
}

TEST_F(SettingsCommandsTest, ExposureIsTheConfiguredOne) {
  EXPECT_EQ(ask("280MSG_SLGETEXPOSURE"), 20000);
  const double usual = liveMean();
  say("83MSG_SLWriteIniInt");
  for (const char* text : {"Camera", "Exposure", "5000"}) client->sendText(text);
  EXPECT_EQ(client->receiveInt(), 0);
  EXPECT_EQ(ask("280MSG_SLGETEXPOSURE"), 5000);
  EXPECT_LT(liveMean(), usual / 2);
}

TEST_F(SettingsCommandsTest, AllClientsSeeOneHead) {
  RawClient other;
  other.greet();
  EXPECT_EQ(ask("55MSG_SLSetGain", {33}), 0);
  other.sendText("56MSG_SLGetGain");
  EXPECT_EQ(other.receiveInt(), 33);
}

}  // namespace
}  // namespace fringix::head
