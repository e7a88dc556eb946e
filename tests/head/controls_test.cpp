#include <gtest/gtest.h>

#include "head/model/controls.h"
#include "head/model/head_model.h"
#include "manual_clock.h"

namespace fringix::head {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

TEST(ThermalBodyTest, GoesToItsTargetByItsTimeConstant) {
  const TimePoint start{};
  ThermalBody body(20, seconds(100), start);
  body.setTarget(120, start);
  EXPECT_DOUBLE_EQ(body.temperature(start), 20);
  EXPECT_NEAR(body.temperature(start + seconds(100)), 83.212, 0.001) << "1/e of the way is left";
  EXPECT_NEAR(body.temperature(start + seconds(200)), 106.466, 0.001);
}

TEST(ThermalBodyTest, ANewTargetBeginsWhereTheOldOneWasLeft) {
  const TimePoint start{};
  ThermalBody body(20, seconds(100), start);
  body.setTarget(120, start);
  body.setTarget(20, start + seconds(100));
  EXPECT_NEAR(body.temperature(start + seconds(100)), 83.212, 0.001);
  EXPECT_NEAR(body.temperature(start + seconds(200)), 43.254, 0.001);
}

class ControlsTest : public testing::Test {
 protected:
  ManualClock time;
  Controls controls{time.clock()};
};

TEST_F(ControlsTest, LedPowerStaysWithinItsRange) {
  EXPECT_EQ(controls.ledPower(), 100);
  EXPECT_EQ(controls.setLedPower(10), Status::ok);
  EXPECT_EQ(controls.setLedPower(9), Status::badParameter);
  EXPECT_EQ(controls.ledPower(), 10);
  EXPECT_EQ(controls.setLedPower(200), Status::ok);
  EXPECT_EQ(controls.setLedPower(201), Status::badParameter);
  EXPECT_EQ(controls.setLedPower(-1), Status::badParameter);
  EXPECT_EQ(controls.ledPower(), 200);
}

TEST_F(ControlsTest, DirectLedPowerHasTheDriversRange) {
  EXPECT_EQ(controls.setLedPowerDirectly(255), Status::ok);
  EXPECT_EQ(controls.ledPower(), 255);
  EXPECT_EQ(controls.setLedPowerDirectly(0), Status::ok);
  EXPECT_EQ(controls.setLedPowerDirectly(256), Status::badParameter);
  EXPECT_EQ(controls.setLedPowerDirectly(-1), Status::badParameter);
  EXPECT_EQ(controls.ledPower(), 0);
}

TEST_F(ControlsTest, BrightnessAndGainStayWithinTheirRanges) {
  EXPECT_EQ(controls.brightnessLevel(), 9);
  EXPECT_EQ(controls.setBrightnessLevel(0), Status::ok);
  EXPECT_EQ(controls.setBrightnessLevel(10), Status::badParameter);
  EXPECT_EQ(controls.setBrightnessLevel(-1), Status::badParameter);
  EXPECT_EQ(controls.brightnessLevel(), 0);
  EXPECT_EQ(controls.gain(), 10);
  EXPECT_EQ(controls.setGain(100), Status::ok);
  EXPECT_EQ(controls.setGain(101), Status::badParameter);
  EXPECT_EQ(controls.setGain(9), Status::badParameter);
  EXPECT_EQ(controls.gain(), 100);
}

TEST_F(ControlsTest, LampStrengthIsPowerTimesLevel) {
  EXPECT_DOUBLE_EQ(controls.lampStrength(), 1);
  controls.setLedPower(200);
  EXPECT_DOUBLE_EQ(controls.lampStrength(), 2);
  controls.setBrightnessLevel(0);
  EXPECT_DOUBLE_EQ(controls.lampStrength(), 0.2);
}

TEST_F(ControlsTest, UptimeCountsWholeSeconds) {
  EXPECT_EQ(controls.uptime(), 0);
  time.advance(seconds(3700));
  EXPECT_EQ(controls.uptime(), 3700);
}

TEST_F(ControlsTest, AHeadWarmsUpFromRoomTemperature) {
  EXPECT_EQ(controls.cameraTemperature(), 22);
  EXPECT_EQ(controls.projectorTemperature(), 22);
  time.advance(minutes(2));
  EXPECT_EQ(controls.cameraTemperature(), 26) << "42 - 20 e^-0.2 = 25.6";
  EXPECT_EQ(controls.projectorTemperature(), 42) << "54 - 32 e^-1 = 42.2";
  time.advance(hours(10));
  EXPECT_EQ(controls.cameraTemperature(), 42);
  EXPECT_EQ(controls.projectorTemperature(), 54);
}

TEST_F(ControlsTest, TemperaturesFollowTheLedPower) {
  time.advance(hours(10));
  controls.setLedPower(200);
  EXPECT_EQ(controls.projectorTemperature(), 54) << "not at once";
  time.advance(minutes(2));
  EXPECT_EQ(controls.projectorTemperature(), 69) << "78 - 24 e^-1 = 69.2";
  time.advance(hours(10));
  EXPECT_EQ(controls.projectorTemperature(), 78);
  EXPECT_EQ(controls.cameraTemperature(), 54);
  controls.setLedPowerDirectly(0);
  time.advance(hours(10));
  EXPECT_EQ(controls.projectorTemperature(), 30);
  EXPECT_EQ(controls.cameraTemperature(), 30);
}

class HeadHealthTest : public testing::Test {
 protected:
  static HeadSettings settingsWith(ManualClock& time) {
    HeadSettings settings;
    settings.camera = {32, 24};
    settings.projector = {4, 2};
    settings.clock = time.clock();
    return settings;
  }

  ManualClock time;
  HeadModel model{settingsWith(time)};
};

TEST_F(HeadHealthTest, AHeadIsWellWithAnyPowerOfItsRange) {
  EXPECT_EQ(model.selfCheck(), 0);
  model.controls().setLedPower(200);
  time.advance(hours(10));
  EXPECT_EQ(model.selfCheck(), 0);
}

TEST_F(HeadHealthTest, TellsWhatIsTooWarm) {
  model.controls().setLedPowerDirectly(230);
  time.advance(hours(10));
  EXPECT_EQ(model.selfCheck(), projectorTooWarm);
  model.controls().setLedPowerDirectly(255);
  time.advance(hours(10));
  EXPECT_EQ(model.selfCheck(), cameraTooWarm | projectorTooWarm);
  model.controls().setLedPower(100);
  time.advance(hours(10));
  EXPECT_EQ(model.selfCheck(), 0);
}

TEST_F(HeadHealthTest, TellsThatMeasurementsFail) {
  model.setMeasurementFault(-2);
  EXPECT_EQ(model.selfCheck(), measurementsFail);
}

TEST_F(HeadHealthTest, ProjectorStatusHasABitForEachFact) {
  EXPECT_EQ(model.projectorStatus(), ledIsOn | dmdIsOn);
  EXPECT_EQ(model.setMask(std::vector<std::uint8_t>(8)), Status::ok);
  EXPECT_EQ(model.projectorStatus(), ledIsOn | dmdIsOn | maskIsSet);
  model.clearMask();
  model.switchDmd(false);
  EXPECT_EQ(model.projectorStatus(), ledIsOn);
  model.controls().setLedPowerDirectly(255);
  time.advance(hours(10));
  EXPECT_EQ(model.projectorStatus(), ledIsOn | projectorIsHot);
  model.controls().setLedPowerDirectly(0);
  EXPECT_EQ(model.projectorStatus(), projectorIsHot) << "for a while";
}

}  // namespace
}  // namespace fringix::head
