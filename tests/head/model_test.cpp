#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>

#include "head/digits.h"
#include "head/head_model.h"
#include "head/patterns.h"

namespace fringix::head {
namespace {

HeadSettings small() {
  HeadSettings settings;
  settings.camera = {160, 128};
  settings.projector = {80, 50};
  return settings;
}

HeadSettings withoutNoise() {
  HeadSettings settings = small();
  settings.noise = 0;
  return settings;
}

Picture take(HeadModel& model, std::uint32_t channel = 0) {
  Picture picture;
  EXPECT_TRUE(model.takePicture(channel, picture));
  return picture;
}

double meanOf(const Picture& picture) {
  return std::accumulate(picture.pixels.begin(), picture.pixels.end(), 0.0) / static_cast<double>(picture.pixels.size());
}

std::size_t differingPixels(const Picture& a, const Picture& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) count += a.pixels[i] != b.pixels[i] ? 1U : 0U;
  return count;
}

std::shared_ptr<const Pattern> shared(Pattern pattern) { return std::make_shared<const Pattern>(std::move(pattern)); }

TEST(HeadPictureTest, HasTheCamerasSize) {
  HeadModel model(small());
  const Picture picture = take(model);
  EXPECT_EQ(picture.size, (Size{160, 128}));
  EXPECT_EQ(picture.pixels.size(), 160U * 128U);
}

TEST(HeadPictureTest, CarriesTheNumberOfThePicture) {
  HeadModel model(withoutNoise());
  const std::size_t differing = differingPixels(take(model), take(model));
  EXPECT_GT(differing, 0U);
  EXPECT_LT(differing, 50U) << "only the label changes";
}

TEST(HeadPictureTest, CarriesTheSerialNumber) {
  HeadSettings settings = withoutNoise();
  HeadModel one(settings);
  settings.serial += 1;
  HeadModel other(settings);
  EXPECT_GT(differingPixels(take(one), take(other)), 0U);
}

TEST(HeadPictureTest, NoPixelIsZero) {
  HeadModel model(small());
  model.show(shared(makeUniform(small().projector, 0)));
  model.setGain(0);
  const Picture picture = take(model);
  EXPECT_EQ(std::count(picture.pixels.begin(), picture.pixels.end(), 0), 0);
}

TEST(HeadPictureTest, TheSmallestHeadHasPictures) {
  HeadSettings settings;
  settings.camera = {1, 1};
  settings.projector = {1, 1};
  HeadModel model(settings);
  EXPECT_EQ(take(model).pixels.size(), 1U);
}

TEST(HeadPictureTest, ChannelsSeeTheSceneFromDifferentSides) {
  HeadModel model(withoutNoise());
  EXPECT_GT(differingPixels(take(model, 0), take(model, 1)), 1000U);
}

TEST(HeadPictureTest, AnUnknownChannelHasNoPicture) {
  HeadModel model(small());
  Picture picture;
  EXPECT_FALSE(model.takePicture(2, picture));
}

TEST(HeadPictureTest, ShowsWhatIsProjected) {
  HeadModel model(withoutNoise());
  const Picture white = take(model);
  model.show(shared(makeUniform(small().projector, 0)));
  const Picture dark = take(model);
  EXPECT_GT(meanOf(white), 100);
  EXPECT_LT(meanOf(dark), 20);
  model.show(nullptr);
  EXPECT_LT(differingPixels(take(model), white), 50U) << "white light again";
}

TEST(HeadPictureTest, ASmallImageLightsTheTopLeftCornerOnly) {
  HeadModel model(withoutNoise());
  model.show(shared(makeUniform({40, 50}, 255)));
  const Picture half = take(model);
  model.show(nullptr);
  const Picture white = take(model);
  EXPECT_LT(meanOf(half), 0.7 * meanOf(white));
  EXPECT_EQ(half.pixels[64 * 160 + 20], white.pixels[64 * 160 + 20]) << "the left side of the scene";
  EXPECT_LT(half.pixels[64 * 160 + 140], white.pixels[64 * 160 + 140] / 4) << "the right side";
}

TEST(HeadPictureTest, BrightnessActsOnTheLampAndGainOnEverything) {
  HeadModel model(withoutNoise());
  const double white = meanOf(take(model));
  model.setBrightness(0.5);
  const double dimmed = meanOf(take(model));
  EXPECT_NEAR(dimmed, white / 2, 10);
  model.setGain(2);
  EXPECT_NEAR(meanOf(take(model)), 2 * dimmed, 10);
}

TEST(HeadPictureTest, NoiseHasTheStatedDeviationAndFollowsTheSeed) {
  HeadSettings settings = small();
  settings.noise = 3;
  HeadModel clean(withoutNoise());
  HeadModel noisy(settings);
  HeadModel same(settings);
  const Picture reference = take(clean);
  const Picture picture = take(noisy);
  double squares = 0;
  for (std::size_t i = 0; i < picture.pixels.size(); ++i)
    squares += (picture.pixels[i] - reference.pixels[i]) * (picture.pixels[i] - reference.pixels[i]);
  EXPECT_NEAR(std::sqrt(squares / static_cast<double>(picture.pixels.size())), 3, 0.3);
  EXPECT_EQ(differingPixels(picture, take(same)), 0U);
  settings.noiseSeed = 2;
  HeadModel other(settings);
  EXPECT_GT(differingPixels(picture, take(other)), 1000U);
}

TEST(HeadMeasurementTest, StoresAPictureOfEachChannelUnderTheImagesIndex) {
  HeadModel model(withoutNoise());
  std::uint32_t id = 0;
  ASSERT_EQ(model.allocateSequence(2, id), Status::ok);
  model.putImage(id, 1, makeUniform(small().projector, 255));
  Picture picture;
  EXPECT_FALSE(model.loadPicture({0, 1}, picture));
  EXPECT_EQ(model.measureImage(id, 0), Status::ok);
  EXPECT_EQ(model.measureImage(id, 1), Status::ok);
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
    ASSERT_TRUE(model.loadPicture({channel, 0}, picture));
    EXPECT_LT(meanOf(picture), 20) << "an image that was never filled is dark";
    ASSERT_TRUE(model.loadPicture({channel, 1}, picture));
    EXPECT_GT(meanOf(picture), 100);
  }
  EXPECT_FALSE(model.loadPicture({0, 2}, picture));
  EXPECT_GT(meanOf(take(model)), 100) << "the last image stays on the projector";
}

TEST(HeadMeasurementTest, FailsWhenThePicturesHaveNoRoom) {
  HeadSettings settings = small();
  settings.pictureMemory = 160 * 128 * 3;  // the two pictures of one image, and half of the next
  HeadModel model(settings);
  std::uint32_t id = 0;
  ASSERT_EQ(model.allocateSequence(2, id), Status::ok);
  EXPECT_EQ(model.measureImage(id, 0), Status::ok);
  EXPECT_EQ(model.measureImage(id, 1), Status::outOfMemory);
  EXPECT_EQ(model.measureImage(id, 0), Status::ok) << "pictures are replaced";
}

TEST(DigitsTest, DrawsAOne) {
  Picture picture;
  picture.resize({5, 7});
  drawDigits(picture, 0, 0, 1, "1", 9);
  const std::vector<std::uint8_t> one = {0, 0, 9, 0, 0,  //
                                         0, 9, 9, 0, 0,  //
                                         0, 0, 9, 0, 0,  //
                                         0, 0, 9, 0, 0,  //
                                         0, 0, 9, 0, 0,  //
                                         0, 0, 9, 0, 0,  //
                                         0, 9, 9, 9, 0};
  EXPECT_EQ(picture.pixels, one);
}

TEST(DigitsTest, StaysInsideThePicture) {
  Picture picture;
  picture.resize({10, 10});
  drawDigits(picture, -7, -9, 3, "888888", 9);
  EXPECT_GT(std::count(picture.pixels.begin(), picture.pixels.end(), 9), 0);
}

}  // namespace
}  // namespace fringix::head
