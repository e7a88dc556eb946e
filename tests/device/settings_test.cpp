// What only the settings commands do.
#include <gtest/gtest.h>

#include <climits>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

TEST(SettingsTest, APowerOutsideTheRangeIsRefusedAfterTheRangeAlone) {
  const Bytes range = text("46MSG_SLGetProjPowMinMax");
  OpenSession session({expect(range), reply(integers(10, 100)), expect(range), reply(integers(10, 100))});
  EXPECT_EQ(SLSetLEDPower(session.handle(), 9), SLBAD_PARAMETER);
  EXPECT_EQ(SLSetLEDPower(session.handle(), 101), SLBAD_PARAMETER);
  EXPECT_EQ(readable(session.sent()), readable(range + range));
}

TEST(SettingsTest, TheGainRangeIsAskedForOnce) {
  const Bytes request = text("57MSG_SLGetGainMinMax");
  OpenSession session({expect(request), reply(integers(100, 1))});
  for (int i = 0; i < 2; ++i) {
    std::int32_t min = 0;
    std::int32_t max = 0;
    EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, &max), SLALL_OKAY);
    EXPECT_EQ(min, 1);
    EXPECT_EQ(max, 100);
  }
  EXPECT_EQ(SLGetGainMinMax(session.handle(), nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(readable(session.sent()), readable(request));
}

TEST(SettingsTest, OneKnownEndOfTheGainRangeIsEnoughToRemember) {
  OpenSession session({expect(text("57MSG_SLGetGainMinMax")), reply(integers(5, -3))});
  std::int32_t min = 0;
  EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, nullptr), SLALL_OKAY);
  EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, nullptr), SLALL_OKAY);
  EXPECT_EQ(min, -3);
  EXPECT_EQ(session.sent(), text("57MSG_SLGetGainMinMax"));
}

TEST(SettingsTest, AGainRangeCutInTheMiddleIsForgotten) {
  OpenSession session({expect(text("57MSG_SLGetGainMinMax")), reply(integer(100)), cut()});
  std::int32_t min = 42;
  EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, &min), SLCONNECTION_ERROR);
  EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, &min), SLSYSTEM_ERROR);
  EXPECT_EQ(min, 42);
}

TEST(SettingsTest, AKnownGainRangeIsForgottenWithTheConnection) {
  OpenSession session({expect(text("57MSG_SLGetGainMinMax")), reply(integers(100, 1)), expect(text("56MSG_SLGetGain")),
                       reply(integer(5).substr(0, 3)), cut()});
  std::int32_t min = 42;
  std::int32_t max = 43;
  EXPECT_EQ(SLGetGainMinMax(session.handle(), nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(SLGetGain(session.handle(), nullptr), SLCONNECTION_ERROR);
  EXPECT_EQ(SLGetGainMinMax(session.handle(), &min, &max), SLSYSTEM_ERROR) << "the head would have to be asked again";
  EXPECT_EQ(min, 42);
  EXPECT_EQ(max, 43);
}

TEST(SettingsTest, SettingABrightnessPassesTheHeadsAnswerOn) {
  for (const int answer : {7, -1, INT_MIN}) {
    OpenSession session({expect(text("52MSG_SLSetBrightness") + integers(4)), reply(integer(answer))});
    EXPECT_EQ(SLSetBrightnessLevel(session.handle(), 5), answer);
  }
}

TEST(SettingsTest, LevelsAtTheEndsOfTheNumbersWrap) {
  OpenSession session({expect(text("53MSG_SLGetBrightness")), reply(integer(INT_MAX)),
                       expect(text("52MSG_SLSetBrightness") + integers(INT_MAX)), reply(integer(0))});
  std::int32_t level = 0;
  EXPECT_EQ(SLGetBrightnessLevel(session.handle(), &level), SLALL_OKAY);
  EXPECT_EQ(level, INT_MIN);
  EXPECT_EQ(SLSetBrightnessLevel(session.handle(), INT_MIN), SLALL_OKAY);
}

TEST(SettingsTest, NullOutputsAreSkipped) {
  OpenSession session({expect(text("46MSG_SLGetProjPowMinMax")), reply(integers(1, 2)), expect(text("54MSG_SLGetBrightnessMinMax")),
                       reply(integers(3, 4)), expect(text("53MSG_SLGetBrightness")), reply(integer(5)), expect(text("56MSG_SLGetGain")),
                       reply(integer(6))});
  EXPECT_EQ(SLGetLEDPowerMinMax(session.handle(), nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(SLGetBrightnessMinMax(session.handle(), nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(SLGetBrightnessLevel(session.handle(), nullptr), SLALL_OKAY);
  EXPECT_EQ(SLGetGain(session.handle(), nullptr), SLALL_OKAY);
}

}  // namespace

}  // namespace fringix::test
