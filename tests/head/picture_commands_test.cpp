#include "head/optics/regions.h"
#include "running_head.h"

namespace fringix::head {
namespace {

class PictureCommandsTest : public RunningHead {
 protected:
  PictureCommandsTest() {
    Picture picture;
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
      server.model().takePicture(channel, stored[channel]);
      server.model().storePicture({channel, 7}, stored[channel]);
    }
  }

  static std::vector<std::uint8_t> cropped(const Picture& picture, const Region& region) {
    Picture part;
    crop(picture, region, part);
    return part.pixels;
  }

  static bool isMissing(const std::vector<std::uint8_t>& bytes) { return bytes[0] == 0x00 && bytes[1] == 0xFF; }

  Picture stored[channelCount];
};

TEST_F(PictureCommandsTest, StoredPicturesByIndexAndChannel) {
  EXPECT_EQ(askBytes(frameBytes, "43MSG_SLGetImageIndex", {7}), stored[0].pixels);
  EXPECT_EQ(askBytes(frameBytes, "222MSG_SLGetImageIndexEx", {7, 1}), stored[1].pixels);
  expectInStep();
}

TEST_F(PictureCommandsTest, RegionsOfStoredPictures) {
  EXPECT_EQ(askBytes(20 * 10, "44MSG_SLGetImageIndexROI", {5, 6, 20, 10, 7}), cropped(stored[0], {5, 6, 20, 10}));
  EXPECT_EQ(askBytes(4 * 3, "223MSG_SLGetImageIndexROIEx", {60, 45, 4, 3, 7, 1}), cropped(stored[1], {60, 45, 4, 3}));
  EXPECT_EQ(askBytes(frameBytes, "44MSG_SLGetImageIndexROI", {0, 0, 64, 48, 7}), stored[0].pixels);
  expectInStep();
}

TEST_F(PictureCommandsTest, LivePicturesHaveTheSizeAskedFor) {
  EXPECT_FALSE(isMissing(askBytes(frameBytes, "41MSG_SLGetLiveImage")));
  EXPECT_FALSE(isMissing(askBytes(frameBytes, "220MSG_SLGetLiveImageEx", {1})));
  EXPECT_FALSE(isMissing(askBytes(30 * 20, "42MSG_SLGetLiveImageROI", {1, 2, 30, 20})));
  EXPECT_FALSE(isMissing(askBytes(30 * 20, "221MSG_SLGetLiveImageROIEx", {1, 2, 30, 20, 1})));
  EXPECT_FALSE(isMissing(askBytes(16 * 12, "225MSG_SLGetLiveImageLowRes", {4, 1})));
  EXPECT_FALSE(isMissing(askBytes(10 * 5, "226MSG_SLGetLiveImageROILowRes", {3, 3, 20, 10, 0, 2})));
  expectInStep();
}

TEST_F(PictureCommandsTest, AReducedPictureShowsTheSameScene) {
  const auto reduced = askBytes(16 * 12, "225MSG_SLGetLiveImageLowRes", {4, 1});
  Picture expected;
  reduce(stored[1], {0, 0, 64, 48}, 4, expected);
  for (std::size_t i = 16 * 4; i < reduced.size(); ++i) ASSERT_NEAR(reduced[i], expected.pixels[i], 3) << "below the label, noise apart";
}

TEST_F(PictureCommandsTest, ARegionOfALivePictureIsThatRegion) {
  const auto region = askBytes(30 * 20, "221MSG_SLGetLiveImageROIEx", {20, 20, 30, 20, 1});
  const auto expected = cropped(stored[1], {20, 20, 30, 20});
  for (std::size_t i = 0; i < region.size(); ++i) ASSERT_NEAR(region[i], expected[i], 15) << "noise apart";
}

TEST_F(PictureCommandsTest, WhatIsNotThereIsMarked) {
  EXPECT_TRUE(isMissing(askBytes(frameBytes, "43MSG_SLGetImageIndex", {8})));
  EXPECT_TRUE(isMissing(askBytes(frameBytes, "222MSG_SLGetImageIndexEx", {7, 2})));
  EXPECT_TRUE(isMissing(askBytes(4, "44MSG_SLGetImageIndexROI", {0, 0, 2, 2, -1})));
  EXPECT_TRUE(isMissing(askBytes(frameBytes, "220MSG_SLGetLiveImageEx", {2})));
  EXPECT_TRUE(isMissing(askBytes(6, "42MSG_SLGetLiveImageROI", {62, 0, 3, 2}))) << "outside the picture";
  EXPECT_TRUE(isMissing(askBytes(6, "42MSG_SLGetLiveImageROI", {-1, 0, 3, 2}))) << "far outside the picture";
  EXPECT_TRUE(isMissing(askBytes(21 * 48 / 3, "225MSG_SLGetLiveImageLowRes", {3, 0}))) << "3 does not divide 64";
  EXPECT_EQ(askBytes(1, "44MSG_SLGetImageIndexROI", {0, 0, 1, 1, 8}), std::vector<std::uint8_t>{0});
  expectInStep();
}

TEST_F(PictureCommandsTest, AnEmptyRegionHasNoBytes) {
  say("44MSG_SLGetImageIndexROI", {0, 0, 0, 5, 7});
  say("223MSG_SLGetImageIndexROIEx", {0, 0, 5, 0, 7, 1});
  say("42MSG_SLGetLiveImageROI", {-1, -1, 0, -1});
  say("225MSG_SLGetLiveImageLowRes", {-1, 0});
  expectInStep();
}

TEST_F(PictureCommandsTest, NumberOfChannels) {
  EXPECT_EQ(ask("224MSG_SLNumberOfChannels"), 2);
  EXPECT_EQ(client->receiveInt(), 0);
}

TEST_F(PictureCommandsTest, EndsASessionThatAsksForMoreThanAPicture) {
  say("42MSG_SLGetLiveImageROI", {0, 0, -1, -1});
  EXPECT_TRUE(client->closedByHead());
}

TEST_F(PictureCommandsTest, EndsASessionThatReducesByNothing) {
  say("225MSG_SLGetLiveImageLowRes", {0, 0});
  EXPECT_TRUE(client->closedByHead());
}

}  // namespace
}  // namespace fringix::head
