// Calls that the library answers by itself: nothing but, where the command has a minimum version, the question for it goes out.
#include <gtest/gtest.h>

#include <functional>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

struct Refusal {
  std::string name;
  std::function<int(OpenSession& session, std::uint8_t* buffer)> call;
  int result;
  bool asksVersion = false;
};

std::ostream& operator<<(std::ostream& out, const Refusal& row) { return out << row.name; }

constexpr std::uint8_t guard = 0xA5;
constexpr std::uint32_t huge = 0xFFFFFFFF;

class RefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, SendsNothingAndTouchesNothing) {
  const Refusal& row = GetParam();
  const Bytes question = row.asksVersion ? text("20MSG_SLGetProtocolVersion") : Bytes{};
  OpenSession session({expect(question), reply(row.asksVersion ? integer(3300) : Bytes{})});
  std::vector<std::uint8_t> buffer(256, guard);
  EXPECT_EQ(row.call(session, buffer.data()), row.result);
  EXPECT_EQ(buffer, std::vector<std::uint8_t>(256, guard));
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY) << "the session stays usable";
  EXPECT_EQ(readable(session.sent()), readable(question + text("100MSG_SLNOOP")));
}

const std::uint8_t pixels[128] = {};

std::int32_t* integerAt(std::uint8_t* buffer) { return reinterpret_cast<std::int32_t*>(buffer); }
std::uint8_t** pointerAt(std::uint8_t* buffer) { return reinterpret_cast<std::uint8_t**>(buffer); }
char* textAt(std::uint8_t* buffer) { return reinterpret_cast<char*>(buffer); }

std::vector<Refusal> refusals() {
  constexpr int bad = SLBAD_PARAMETER;
  using S = OpenSession;
  using B = std::uint8_t;
  return {
      {"SeqAllocWithoutAPlaceForTheId", [](S& s, B*) { return SLSeqAlloc(s.handle(), 1, nullptr); }, bad},
      {"SeqPutOfOtherWidth", [](S& s, B*) { return SLSeqPut(s.handle(), 7, pixels, 5, 5, 18, 0); }, bad},
      {"SeqPutOfOtherHeight", [](S& s, B*) { return SLSeqPut(s.handle(), 7, pixels, 6, 4, 18, 0); }, bad},
      {"SeqPutOfPaddedRows", [](S& s, B*) { return SLSeqPut(s.handle(), 7, pixels, 6, 5, 19, 0); }, bad},
      {"SeqMakeGrayCodeOfBit24", [](S& s, B*) { return SLSeqMakeGrayCode(s.handle(), 7, 1, 24, 3, 4); }, bad},
      {"SeqMakeGrayCodeOfBit255", [](S& s, B*) { return SLSeqMakeGrayCode(s.handle(), 7, 1, 255, 3, 4); }, bad},
      {"CalcGrayCodeOfOneByteAPixel", [](S& s, B* b) { return s.device().CalcGrayCode(b, 8, 4, 1, 2, 3, 4); }, bad},
      {"CalcGrayCodeOfOtherHeight", [](S& s, B* b) { return s.device().CalcGrayCode(b, 16, 5, 1, 2, 3, 4); }, bad},
      {"CalcGrayCodeOfNegativePitch", [](S& s, B* b) { return s.device().CalcGrayCode(b, -16, 4, 1, 2, 3, 4); }, bad},

      {"ShowImageWithoutPixels", [](S& s, B*) { return SLShowImage(s.handle(), nullptr, 6, 5, 18); }, bad},
      {"ShowImageOfNoWidth", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 0, 5, 18); }, bad},
      {"ShowImageOfNoHeight", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 6, 0, 18); }, bad},
      {"ShowImageOfNoStride", [](S& s, B*) { return SLShowImage(s.handle(), pixels, -6, 5, 0); }, bad},
      {"ShowImageOfShortRows", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 6, 5, 17); }, bad},
      {"ShowImageTooWide", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 7, 5, 21); }, bad},
      {"ShowImageTooHigh", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 6, 6, 18); }, bad},
      {"ShowImageOfLongRows", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 6, 5, 19); }, bad},
      {"ShowImageOfNegativeHeight", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 6, -5, 18); }, bad},
      {"ShowImageOfNegativeStride", [](S& s, B*) { return SLShowImage(s.handle(), pixels, -6, 5, -18); }, bad},
      {"ShowImageThatWraps", [](S& s, B*) { return SLShowImage(s.handle(), pixels, 0x55555556, 5, 18); }, bad},
      {"ShowImage8TooWide", [](S& s, B*) { return s.device().ShowImage8(pixels, 7, 5, 7); }, bad},
      {"ShowImage8TooHigh", [](S& s, B*) { return s.device().ShowImage8(pixels, 6, 6, 6); }, bad},
      {"ShowImage8OfLongRows", [](S& s, B*) { return s.device().ShowImage8(pixels, 6, 5, 19); }, bad},
      {"ShowImage8OfNegativeHeight", [](S& s, B*) { return s.device().ShowImage8(pixels, 6, -5, 6); }, bad},

      {"LiveRegionTooWide", [](S& s, B* b) { return SLGetLiveImageROI(s.handle(), b, 6, 0, 3, 1); }, bad},
      {"LiveRegionTooHigh", [](S& s, B* b) { return SLGetLiveImageROI(s.handle(), b, 0, 3, 1, 2); }, bad},
      {"LiveRegionThatWraps", [](S& s, B* b) { return SLGetLiveImageROI(s.handle(), b, huge, 0, 2, 1); }, bad},
      {"LiveRegionWithoutABuffer", [](S& s, B*) { return SLGetLiveImageROI(s.handle(), nullptr, 0, 0, 2, 1); }, bad},
      {"LiveRegionOfNoWidth", [](S& s, B* b) { return SLGetLiveImageROI(s.handle(), b, 8, 0, 0, 4); }, SLALL_OKAY},
      {"LiveRegionOfNoHeight", [](S& s, B* b) { return SLGetLiveImageROI(s.handle(), b, 0, 4, 8, 0); }, SLALL_OKAY},
      {"LiveRegionOfNothingWithoutABuffer", [](S& s, B*) { return SLGetLiveImageROI(s.handle(), nullptr, 0, 0, 0, 0); }, bad},
      {"ChannelRegionTooWide", [](S& s, B* b) { return SLGetLiveImageROIEx(s.handle(), 1, b, 1, 0, 8, 1); }, bad, true},
      {"ChannelRegionWithoutABuffer", [](S& s, B*) { return SLGetLiveImageROIEx(s.handle(), 1, nullptr, 0, 0, 2, 1); }, bad, true},
      {"ChannelRegionOfNoHeight", [](S& s, B* b) { return SLGetLiveImageROIEx(s.handle(), 1, b, 0, 0, 8, 0); }, SLALL_OKAY, true},
      {"StoredRegionTooWide", [](S& s, B* b) { return SLGetImageIndexROI(s.handle(), 0, b, 6, 0, 3, 1); }, bad},
      {"StoredRegionThatWraps", [](S& s, B* b) { return SLGetImageIndexROI(s.handle(), 0, b, 0, huge, 1, 2); }, bad},
      {"StoredChannelRegionTooHigh", [](S& s, B* b) { return SLGetImageIndexROIEx(s.handle(), 1, 0, b, 0, 0, 1, 5); }, bad, true},

      {"ReducedByAFactorThatLeavesAColumn", [](S& s, B* b) { return SLGetLiveImageLowRes(s.handle(), 0, b, 3); }, bad, true},
      {"ReducedByAFactorThatLeavesARow", [](S& s, B* b) { return SLGetLiveImageLowRes(s.handle(), 0, b, 8); }, bad, true},
      {"ReducedByZero", [](S& s, B* b) { return SLGetLiveImageLowRes(s.handle(), 0, b, 0); }, bad, true},
      {"ReducedWithoutABuffer", [](S& s, B*) { return SLGetLiveImageLowRes(s.handle(), 0, nullptr, 2); }, bad, true},
      {"ReducedRegionTooWide", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 6, 0, 4, 4, 2); }, bad, true},
      {"ReducedRegionOfOddWidth", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 3, 2, 2); }, bad, true},
      {"ReducedRegionOfOddHeight", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 2, 3, 2); }, bad, true},
      {"ReducedRegionByZero", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 2, 2, 0); }, bad, true},
      {"ReducedRegionByLessThanZero", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 2, 2, -2); }, bad, true},
      {"ReducedRegionWithoutABuffer", [](S& s, B*) { return SLGetLiveImageROILowRes(s.handle(), 0, nullptr, 0, 0, 2, 2, 2); }, bad, true},
      {"ReducedRegionOfNothing", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 0, 4, 2); }, SLALL_OKAY, true},
      {"CheckSystemIntoNowhere", [](S& s, B*) { return SLCheckSystem(s.handle(), nullptr); }, bad},
      {"GetTemperatureIntoNowhere", [](S& s, B*) { return SLGetTemperature(s.handle(), nullptr); }, bad},
      {"GetLEDPowerIntoNowhere", [](S& s, B*) { return SLGetLEDPower(s.handle(), nullptr); }, SLALL_OKAY},
      {"GetUptimeIntoNowhere", [](S& s, B*) { return SLGetUptime(s.handle(), nullptr); }, SLALL_OKAY, true},
      {"GetProjectorTemperatureIntoNowhere", [](S& s, B*) { return SLGetProjectorTemperature(s.handle(), nullptr); }, SLALL_OKAY, true},
      {"GetProjectorStatusIntoNowhere", [](S& s, B*) { return SLGetProjectorStatus(s.handle(), nullptr); }, SLALL_OKAY, true},
      {"GetCurrentExposureIntoNowhere", [](S& s, B*) { return SLGetCurrentExposure(s.handle(), nullptr); }, SLALL_OKAY, true},

      {"SaveDataOfNothing", [](S& s, B*) { return SLSaveData(s.handle(), nullptr, 4, "a"); }, SLSYSTEM_ERROR},
      {"SaveDataOfNoSize", [](S& s, B*) { return SLSaveData(s.handle(), pixels, 0, "a"); }, SLSYSTEM_ERROR},
      {"SaveDataWithoutAName", [](S& s, B*) { return SLSaveData(s.handle(), pixels, 4, nullptr); }, SLSYSTEM_ERROR},
      {"LoadDataIntoNowhere", [](S& s, B* b) { return SLLoadData(s.handle(), nullptr, integerAt(b), "a"); }, bad},
      {"LoadDataWithoutASize", [](S& s, B* b) { return SLLoadData(s.handle(), pointerAt(b), nullptr, "a"); }, bad},
      {"LoadDataWithoutAName", [](S& s, B* b) { return SLLoadData(s.handle(), pointerAt(b), integerAt(b), nullptr); }, bad},
      {"ReadIniIntWithoutASection", [](S& s, B* b) { return SLReadIniInt(s.handle(), integerAt(b), nullptr, "k"); }, bad},
      {"ReadIniIntWithoutAKey", [](S& s, B* b) { return SLReadIniInt(s.handle(), integerAt(b), "s", nullptr); }, bad},
      {"WriteIniIntWithoutAKey", [](S& s, B*) { return SLWriteIniInt(s.handle(), 1, "s", nullptr); }, bad},
      {"SetOutputSettingsBelowZero", [](S& s, B*) { return s.device().SetOutputSettings(-1, 0); }, bad},
      {"ExecOutputBelowZero", [](S& s, B*) { return s.device().ExecOutput(-1); }, bad},
      {"GetGPIOStatusIntoNowhere", [](S& s, B*) { return SLGetGPIOStatus(s.handle(), 1, nullptr); }, SLALL_OKAY, true},
      {"ExecRS232OfNothing", [](S& s, B* b) { return SLExecRS232(s.handle(), nullptr, textAt(b), 8); }, bad, true},
      {"ExecRS232IntoNowhere", [](S& s, B*) { return SLExecRS232(s.handle(), "x", nullptr, 8); }, bad, true},

      {"ReducedRegionOfNothingByZero", [](S& s, B* b) { return SLGetLiveImageROILowRes(s.handle(), 0, b, 0, 0, 0, 4, 0); }, bad, true},
  };
}

INSTANTIATE_TEST_SUITE_P(Calls, RefusalTest, testing::ValuesIn(refusals()), [](const auto& test) { return test.param.name; });

TEST(RefusalOrderTest, AMissingConnectionComesBeforeABadParameter) {
  OpenSession session({reset()});
  ASSERT_EQ(session.device().GetSerial(nullptr), SLCONNECTION_ERROR);
  std::uint32_t id = 42;
  EXPECT_EQ(SLSeqAlloc(session.handle(), 1, nullptr), SLSYSTEM_ERROR);
  EXPECT_EQ(SLSeqAlloc(session.handle(), 1, &id), SLSYSTEM_ERROR);
  EXPECT_EQ(id, 42U);
  EXPECT_EQ(SLSeqMakeGrayCode(session.handle(), 7, 1, 24, 3, 4), SLSYSTEM_ERROR);
  EXPECT_EQ(SLGetLiveImageROI(session.handle(), nullptr, 0, 0, 1, 1), SLSYSTEM_ERROR);
}

TEST(RefusalOrderTest, SomeChecksComeBeforeTheConnection) {
  OpenSession session({reset()});
  ASSERT_EQ(session.device().GetSerial(nullptr), SLCONNECTION_ERROR);
  std::uint8_t* data = nullptr;
  EXPECT_EQ(SLCheckSystem(session.handle(), nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLGetTemperature(session.handle(), nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLGetLEDPower(session.handle(), nullptr), SLALL_OKAY);
  EXPECT_EQ(SLLoadData(session.handle(), &data, nullptr, "a"), SLBAD_PARAMETER);
  EXPECT_EQ(SLExecRS232(session.handle(), nullptr, nullptr, 0), SLVERSION_TOO_OLD);
  EXPECT_EQ(SLGetUptime(session.handle(), nullptr), SLSYSTEM_ERROR) << "here the connection comes first";
  EXPECT_EQ(session.device().SetOutputSettings(-1, 0), SLSYSTEM_ERROR);
}

TEST(RefusalOrderTest, ATooOldVersionComesBeforeABadParameter) {
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2599))});
  EXPECT_EQ(SLGetLiveImageLowRes(session.handle(), 0, nullptr, 0), SLVERSION_TOO_OLD);
  EXPECT_EQ(SLGetImageIndexROIEx(session.handle(), 1, 0, nullptr, 9, 9, 9, 9), SLVERSION_TOO_OLD);
}

}  // namespace

}  // namespace fringix::test
