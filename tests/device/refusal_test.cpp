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

TEST(RefusalOrderTest, ATooOldVersionComesBeforeABadParameter) {
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2599))});
  EXPECT_EQ(SLGetLiveImageLowRes(session.handle(), 0, nullptr, 0), SLVERSION_TOO_OLD);
  EXPECT_EQ(SLGetImageIndexROIEx(session.handle(), 1, 0, nullptr, 9, 9, 9, 9), SLVERSION_TOO_OLD);
}

}  // namespace

}  // namespace fringix::test
