// The live picture: the two ways into the caller's buffer, the mark that stands for no picture, and camera sizes that cannot be.
#include <gtest/gtest.h>

#include <climits>
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

TEST(LiveImageTest, TheMarkOfNoPictureIsASystemErrorAndTheBytesStay) {
  Bytes marked = frame;
  marked[0] = '\x00';
  marked[1] = '\xFF';
  OpenSession session({expect(request), reply(marked), expect(request), reply(marked), expect(request), reply(frame)});
  std::vector<std::uint8_t> buffer(32, guard);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 4), SLSYSTEM_ERROR);
  EXPECT_EQ(readable(Bytes(buffer.begin(), buffer.end())), readable(marked));
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 4, 4), SLSYSTEM_ERROR) << "also through the scratch frame";
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 8, 4), SLALL_OKAY) << "and the session goes on";
}

TEST(LiveImageTest, OneOfTheTwoMarkBytesIsAPicture) {
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

TEST(LiveImageTest, AOneBytePictureHasNoMark) {
  OpenSession session({expect(request), reply(Bytes(1, '\0'))}, {.cameraWidth = 1, .cameraHeight = 1});
  std::uint8_t pixel = guard;
  EXPECT_EQ(SLGetLiveImage(session.handle(), &pixel, 1, 1), SLALL_OKAY);
  EXPECT_EQ(pixel, 0);
}

TEST(LiveImageTest, AFrameOfManyChunksArrivesWhole) {
  const Bytes large = noise(640 * 480, 7);
  OpenSession session({expect(request), reply(large)}, {.cameraWidth = 640, .cameraHeight = 480});
  std::vector<std::uint8_t> buffer(640 * 480);
  EXPECT_EQ(SLGetLiveImage(session.handle(), buffer.data(), 640, 480), SLALL_OKAY);
  EXPECT_TRUE(Bytes(buffer.begin(), buffer.end()) == large);
}

TEST(LiveImageTest, ACutInsideTheScratchFrameLeavesTheBufferAlone) {
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
                                         HeadSizes{.cameraWidth = INT_MIN, .cameraHeight = 8},
                                         HeadSizes{.cameraWidth = 65536, .cameraHeight = 65536},
                                         HeadSizes{.cameraWidth = INT_MAX, .cameraHeight = INT_MAX}));

TEST(LiveImageTest, ThePixelCountOfAnImpossibleCameraWraps) {
  OpenSession session(Script{}, {.cameraWidth = 65536, .cameraHeight = 65537});
  EXPECT_EQ(session.device().GetCameraPixelCount(), 65536);
}

}  // namespace

}  // namespace fringix::test
