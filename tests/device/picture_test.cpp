// What only pictures do: the two ways into the caller's buffer, the mark that stands for no picture, and camera sizes that cannot be.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

constexpr std::uint8_t guard = 0xA5;
const Bytes request = text("41MSG_SLGetLiveImage");
const Bytes frame = noise(8 * 4);

// The `width` x `height` buffer that a crop of the test head's frame must give.
Bytes cropped(std::size_t width, std::size_t height) {
  Bytes buffer(width * height, static_cast<char>(guard));
  for (std::size_t row = 0; row < std::min<std::size_t>(height, 4); ++row) {
    for (std::size_t column = 0; column < std::min<std::size_t>(width, 8); ++column) buffer[row * width + column] = frame[row * 8 + column];
  }
  return buffer;
}

struct Crop {
  std::uint32_t width;
  std::uint32_t height;
};

class CropTest : public testing::TestWithParam<Crop> {};

TEST_P(CropTest, DeliversTheCornerAndLeavesTheRest) {
  const auto [width, height] = GetParam();
  OpenSession session({expect(request), reply(frame), expect(request), reply(frame)});
  for (int i = 0; i < 2; ++i) {  // the second time the scratch frame is there already
    std::vector<std::uint8_t> buffer(std::size_t{width} * height + 16, guard);
    EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), width, height), SLALL_OKAY);
    EXPECT_EQ(readable(Bytes(buffer.begin(), buffer.end())), readable(cropped(width, height) + Bytes(16, static_cast<char>(guard))));
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, CropTest,
                         testing::Values(Crop{18, 4}, Crop{8, 6}, Crop{3, 2}, Crop{10, 9}, Crop{8, 0}, Crop{0, 4}, Crop{0, 0}),
                         [](const auto& test) { return std::to_string(test.param.width) + "x" + std::to_string(test.param.height); });

TEST(PictureTest, AnotherChannelIsCroppedJustSo) {
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2600)),
                       expect(text("220MSG_SLGetLiveImageEx") + integers(2)), reply(frame)});
  std::vector<std::uint8_t> buffer(10 * 9, guard);
  EXPECT_EQ(SLGetLiveImageEx(session.handle(), 2, buffer.data(), 10, 9), SLALL_OKAY);
  EXPECT_EQ(readable(Bytes(buffer.begin(), buffer.end())), readable(cropped(10, 9)));
}

struct MarkedPicture {
  std::string name;
  std::function<int(int handle, std::uint8_t* buffer)> call;
  Bytes request;
  std::size_t size;
  int result;
  bool asksVersion;
};

class NoPictureTest : public testing::TestWithParam<MarkedPicture> {};

TEST_P(NoPictureTest, IsAnErrorAndTheBytesStay) {
  const MarkedPicture& row = GetParam();
  Bytes marked = noise(row.size);
  marked[0] = '\x00';
  marked[1] = '\xFF';
  Script script{expect(row.request), reply(marked), expect(text("100MSG_SLNOOP"))};
  if (row.asksVersion) script = Script{expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2600))} + script;
  OpenSession session(script);
  std::vector<std::uint8_t> buffer(row.size, guard);
  EXPECT_EQ(row.call(session.handle(), buffer.data()), row.result);
  EXPECT_EQ(readable(Bytes(buffer.begin(), buffer.end())), readable(marked));
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY) << "the session goes on";
}

// GetImageIndex alone answers with -3, on purpose.
INSTANTIATE_TEST_SUITE_P(
    Commands, NoPictureTest,
    testing::Values(MarkedPicture{"GetLiveImage", [](int h, std::uint8_t* b) { return SLGetLiveImage(h, b, 8, 4); }, request, 32,
                                  SLSYSTEM_ERROR, false},
                    MarkedPicture{"GetLiveImageEx", [](int h, std::uint8_t* b) { return SLGetLiveImageEx(h, 1, b, 8, 4); },
                                  text("220MSG_SLGetLiveImageEx") + integers(1), 32, SLSYSTEM_ERROR, true},
                    MarkedPicture{"GetLiveImageROI", [](int h, std::uint8_t* b) { return SLGetLiveImageROI(h, b, 0, 0, 2, 1); },
                                  text("42MSG_SLGetLiveImageROI") + integers(0, 0, 2, 1), 2, SLSYSTEM_ERROR, false},
                    MarkedPicture{"GetLiveImageROIEx", [](int h, std::uint8_t* b) { return SLGetLiveImageROIEx(h, 1, b, 0, 0, 2, 1); },
                                  text("221MSG_SLGetLiveImageROIEx") + integers(0, 0, 2, 1, 1), 2, SLSYSTEM_ERROR, true},
                    MarkedPicture{"GetLiveImageROILowRes",
                                  [](int h, std::uint8_t* b) { return SLGetLiveImageROILowRes(h, 0, b, 0, 0, 4, 4, 2); },
                                  text("226MSG_SLGetLiveImageROILowRes") + integers(0, 0, 4, 4, 0, 2), 4, SLSYSTEM_ERROR, true},
                    MarkedPicture{"GetLiveImageLowRes", [](int h, std::uint8_t* b) { return SLGetLiveImageLowRes(h, 0, b, 4); },
                                  text("225MSG_SLGetLiveImageLowRes") + integers(4, 0), 2, SLSYSTEM_ERROR, true},
                    MarkedPicture{"GetImageIndex", [](int h, std::uint8_t* b) { return SLGetImageIndex(h, 1, b); },
                                  text("43MSG_SLGetImageIndex") + integers(1), 32, SLBAD_PARAMETER, false},
                    MarkedPicture{"GetImageIndexEx", [](int h, std::uint8_t* b) { return SLGetImageIndexEx(h, 1, 1, b); },
                                  text("222MSG_SLGetImageIndexEx") + integers(1, 1), 32, SLSYSTEM_ERROR, true},
                    MarkedPicture{"GetImageIndexROI", [](int h, std::uint8_t* b) { return SLGetImageIndexROI(h, 1, b, 0, 0, 2, 1); },
                                  text("44MSG_SLGetImageIndexROI") + integers(0, 0, 2, 1, 1), 2, SLSYSTEM_ERROR, false},
                    MarkedPicture{"GetImageIndexROIEx", [](int h, std::uint8_t* b) { return SLGetImageIndexROIEx(h, 1, 1, b, 0, 0, 2, 1); },
                                  text("223MSG_SLGetImageIndexROIEx") + integers(0, 0, 2, 1, 1, 1), 2, SLSYSTEM_ERROR, true}),
    [](const auto& test) { return test.param.name; });

TEST(PictureTest, TheMarkIsFoundInTheScratchFrameToo) {
  Bytes marked = frame;
  marked[0] = '\x00';
  marked[1] = '\xFF';
  OpenSession session({expect(request), reply(marked), expect(request), reply(marked)});
  std::vector<std::uint8_t> buffer(32, guard);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 4, 4), SLSYSTEM_ERROR);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 0), SLSYSTEM_ERROR) << "also when nothing is copied";
}

TEST(PictureTest, AnEmptyStoredRegionIsAskedForAndBreaksTheSession) {
  for (const std::uint32_t channel : {0U, 1U}) {
    const Bytes version = channel == 0 ? Bytes{} : text("20MSG_SLGetProtocolVersion");
    const Bytes asked = channel == 0 ? text("44MSG_SLGetImageIndexROI") + integers(0, 0, 0, 4, 1)
                                     : text("223MSG_SLGetImageIndexROIEx") + integers(0, 0, 0, 4, 1, 1);
    OpenSession session({expect(version), reply(channel == 0 ? Bytes{} : integer(2600)), expect(asked)});
    std::uint8_t byte = guard;
    EXPECT_EQ(SLGetImageIndexROIEx(session.handle(), channel, 1, &byte, 0, 0, 0, 4), SLCONNECTION_ERROR);
    EXPECT_EQ(SLGetImageIndexROIEx(session.handle(), channel, 1, &byte, 0, 0, 0, 4), SLSYSTEM_ERROR);
    EXPECT_EQ(byte, guard);
    EXPECT_EQ(readable(session.sent()), readable(version + asked));
  }
}

TEST(PictureTest, ReducedFramesHaveTheirExactSize) {
  const Bytes reducedFrame = noise(320 * 1024 / 4, 9);
  OpenSession session({expect(text("20MSG_SLGetProtocolVersion")), reply(integer(2600)),
                       expect(text("225MSG_SLGetLiveImageLowRes") + integers(4, 0)), reply(reducedFrame), expect(text("100MSG_SLNOOP"))},
                      {.cameraWidth = 1280, .cameraHeight = 1024});
  std::vector<std::uint8_t> buffer(81920);
  EXPECT_EQ(SLGetLiveImageLowRes(session.handle(), 0, buffer.data(), 4), SLALL_OKAY);
  EXPECT_TRUE(Bytes(buffer.begin(), buffer.end()) == reducedFrame);
  EXPECT_EQ(SLGetLiveImageLowRes(session.handle(), 0, buffer.data(), 3), SLBAD_PARAMETER);
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY);
}

TEST(PictureTest, OneOfTheTwoMarkBytesIsAPicture) {
  Bytes first = frame;
  first[0] = '\x00';
  first[1] = '\x01';
  Bytes second = frame;
  second[0] = '\x01';
  second[1] = '\xFF';
  OpenSession session({expect(request), reply(first), expect(request), reply(second)});
  std::vector<std::uint8_t> buffer(32);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 4), SLALL_OKAY);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 4), SLALL_OKAY);
}

TEST(PictureTest, AOneBytePictureHasNoMark) {
  OpenSession session({expect(request), reply(Bytes(1, '\0'))}, {.cameraWidth = 1, .cameraHeight = 1});
  std::uint8_t pixel = guard;
  EXPECT_EQ(SLGetLiveImage(session.handle(), &pixel, 1, 1), SLALL_OKAY);
  EXPECT_EQ(pixel, 0);
}

TEST(PictureTest, AFrameOfManyChunksArrivesWhole) {
  const Bytes large = noise(640 * 480, 7);
  OpenSession session({expect(request), reply(large)}, {.cameraWidth = 640, .cameraHeight = 480});
  std::vector<std::uint8_t> buffer(640 * 480);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 640, 480), SLALL_OKAY);
  EXPECT_TRUE(Bytes(buffer.begin(), buffer.end()) == large);
}

TEST(PictureTest, ACutInsideTheScratchFrameLeavesTheBufferAlone) {
  for (std::size_t offset = 0; offset < frame.size(); ++offset) {
    SCOPED_TRACE(offset);
    OpenSession session({expect(request), reply(frame.substr(0, offset)), cut()});
    std::vector<std::uint8_t> buffer(16, guard);
    EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 4, 4), SLCONNECTION_ERROR);
    EXPECT_EQ(buffer, std::vector<std::uint8_t>(16, guard));
    EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 4, 4), SLSYSTEM_ERROR);
  }
}

class ImpossibleCameraTest : public testing::TestWithParam<HeadSizes> {};

TEST_P(ImpossibleCameraTest, GivesAnErrorAndDropsTheConnection) {
  const HeadSizes sizes = GetParam();
  OpenSession session({expect(request), reply(frame), cut()}, sizes);
  std::vector<std::uint8_t> buffer(64, guard);
  const int result = SLGetLiveImage(session.handle(), buffer.data(), 8, 8);
  EXPECT_TRUE(result == SLSYSTEM_ERROR || result == SLCONNECTION_ERROR) << result;
  EXPECT_EQ(buffer, std::vector<std::uint8_t>(64, guard));
  EXPECT_EQ(session.device().Noop(), SLSYSTEM_ERROR);
  EXPECT_EQ(readable(session.sent()), readable(request));
}

INSTANTIATE_TEST_SUITE_P(Sizes, ImpossibleCameraTest,
                         testing::Values(HeadSizes{.cameraWidth = 0, .cameraHeight = 0}, HeadSizes{.cameraWidth = 0, .cameraHeight = 8},
                                         HeadSizes{.cameraWidth = -1, .cameraHeight = -1},
                                         HeadSizes{.cameraWidth = INT_MIN, .cameraHeight = 8}));

TEST(PictureTest, AFrameThatNoMemoryHoldsIsAskedForAgain) {
  OpenSession session({expect(request), expect(request)}, {.cameraWidth = INT_MAX, .cameraHeight = INT_MAX});
  std::vector<std::uint8_t> buffer(64, guard);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 8), SLSYSTEM_ERROR);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 8), SLSYSTEM_ERROR);
  EXPECT_EQ(buffer, std::vector<std::uint8_t>(64, guard));
  EXPECT_EQ(readable(session.sent()), readable(request + request));
}

TEST(PictureTest, ThePixelCountOfAnImpossibleCameraWraps) {
  OpenSession session(Script{}, {.cameraWidth = 65536, .cameraHeight = 65537});
  EXPECT_EQ(session.device().GetCameraPixelCount(), 65536);
}

}  // namespace

}  // namespace fringix::test
