#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

#include "head/model/head_model.h"
#include "head/optics/digits.h"
#include "head/optics/patterns.h"

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

// The root of the mean square.
double deviation(const Picture& a, const Picture& b) {
  double squares = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) squares += (a.pixels[i] - b.pixels[i]) * (a.pixels[i] - b.pixels[i]);
  return std::sqrt(squares / static_cast<double>(a.pixels.size()));
}

std::shared_ptr<const Pattern> shared(Pattern pattern) { return std::make_shared<const Pattern>(std::move(pattern)); }

// With nothing on the projector; then it is white again.
double darkMean(HeadModel& model) {
  model.show(shared(makeUniform(small().projector, 0)));
  const double mean = meanOf(take(model));
  model.show(nullptr);
  return mean;
}

std::vector<std::uint8_t> leftHalf(Size size, std::uint8_t light) {
  std::vector<std::uint8_t> mask;
  for (std::int32_t y = 0; y < size.height; ++y) {
    for (std::int32_t x = 0; x < size.width; ++x) mask.push_back(x < size.width / 2 ? light : 0);
  }
  return mask;
}

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
  model.configuration().write({"Camera", "Exposure"}, Configuration::exposureRange.low);
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

TEST(HeadPictureTest, LedPowerAndBrightnessLevelActOnTheLampAlone) {
  HeadModel model(withoutNoise());
  const double white = meanOf(take(model));
  const double dark = darkMean(model);
  model.controls().setLedPower(50);
  EXPECT_NEAR(meanOf(take(model)) - dark, (white - dark) / 2, 1);
  model.controls().setLedPower(100);
  model.controls().setBrightnessLevel(1);
  EXPECT_NEAR(meanOf(take(model)) - dark, (white - dark) / 5, 1);
  model.controls().setLedPowerDirectly(0);
  EXPECT_NEAR(meanOf(take(model)), dark, 0.1);
}

TEST(HeadPictureTest, GainAndExposureActOnAllLight) {
  HeadModel model(withoutNoise());
  model.controls().setBrightnessLevel(3);
  const double dimmed = meanOf(take(model));
  model.controls().setGain(20);
  EXPECT_NEAR(meanOf(take(model)), 2 * dimmed, 2);
  model.configuration().write({"Camera", "Exposure"}, 10000);
  EXPECT_NEAR(meanOf(take(model)), dimmed, 2);
  model.controls().setGain(10);
  EXPECT_NEAR(meanOf(take(model)), dimmed / 2, 2);
}

TEST(HeadPictureTest, WithoutDmdNothingIsProjected) {
  HeadModel model(withoutNoise());
  const Picture white = take(model);
  const double dark = darkMean(model);
  model.switchDmd(false);
  EXPECT_NEAR(meanOf(take(model)), dark, 0.1);
  model.show(shared(makeUniform(small().projector, 255)));
  EXPECT_NEAR(meanOf(take(model)), dark, 0.1);
  model.switchDmd(true);
  EXPECT_LT(differingPixels(take(model), white), 50U);
}

TEST(HeadPictureTest, AMaskDarkensItsPartOfAnyPattern) {
  HeadModel model(withoutNoise());
  const Picture white = take(model);
  EXPECT_EQ(model.setMask(leftHalf(small().projector, 255)), Status::ok);
  const Picture masked = take(model);
  EXPECT_EQ(masked.pixels[64 * 160 + 20], white.pixels[64 * 160 + 20]) << "the left side of the scene";
  EXPECT_EQ(masked.pixels[64 * 160 + 140], 10) << "the right side has only the light of the surroundings";
  model.show(shared(makeUniform(small().projector, 255)));
  EXPECT_LT(differingPixels(take(model), masked), 50U) << "the mask stays";
  model.clearMask();
  EXPECT_LT(differingPixels(take(model), white), 50U);
}

TEST(HeadPictureTest, AMaskCanBeGraded) {
  HeadModel model(withoutNoise());
  const Picture white = take(model);
  model.setMask(std::vector<std::uint8_t>(std::size_t{80} * 50, 128));
  EXPECT_NEAR(meanOf(take(model)) - 10, (meanOf(white) - 10) * 128 / 255, 1.5);
}

TEST(HeadPictureTest, RefusesAMaskOfAnotherSize) {
  HeadModel model(withoutNoise());
  EXPECT_EQ(model.setMask(std::vector<std::uint8_t>(80 * 50 - 1)), Status::badParameter);
  EXPECT_EQ(model.setMask({}), Status::badParameter);
  EXPECT_EQ(model.projectorStatus() & maskIsSet, 0);
}

TEST(HeadPictureTest, NoiseGrowsWithTheGain) {
  HeadModel clean(withoutNoise());
  HeadModel noisy(small());
  for (HeadModel* model : {&clean, &noisy}) {
    model->switchDmd(false);
    model->controls().setGain(50);
  }
  EXPECT_NEAR(deviation(take(noisy), take(clean)), 5, 0.3);
}

TEST(HeadPictureTest, NoiseHasTheStatedDeviationAndFollowsTheSeed) {
  HeadSettings settings = small();
  settings.noise = 3;
  HeadModel clean(withoutNoise());
  HeadModel noisy(settings);
  HeadModel same(settings);
  const Picture reference = take(clean);
  const Picture picture = take(noisy);
  EXPECT_NEAR(deviation(picture, reference), 3, 0.3);
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
  EXPECT_EQ(model.storedPicture({0, 1}), nullptr);
  EXPECT_EQ(model.measureImage(id, 0), Status::ok);
  EXPECT_EQ(model.measureImage(id, 1), Status::ok);
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
    ASSERT_NE(model.storedPicture({channel, 0}), nullptr);
    EXPECT_LT(meanOf(*model.storedPicture({channel, 0})), 20) << "an image that was never filled is dark";
    ASSERT_NE(model.storedPicture({channel, 1}), nullptr);
    EXPECT_GT(meanOf(*model.storedPicture({channel, 1})), 100);
  }
  EXPECT_EQ(model.storedPicture({0, 2}), nullptr);
  EXPECT_GT(meanOf(take(model)), 100) << "the last image stays on the projector";
}

TEST(HeadMeasurementTest, FailsWhenThePicturesHaveNoRoom) {
  HeadSettings settings = small();
  settings.pictureMemory = std::size_t{160} * 128 * 3;  // the two pictures of one image, and half of the next
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

TEST(HeadModelTest, TellsOfEveryPatternThatWasStored) {
  HeadSettings settings = small();
  std::vector<std::uint32_t> told;
  settings.patternStored = [&](std::uint32_t sequence, std::uint32_t image, const Pattern& pattern) {
    EXPECT_EQ(pattern.pixels.front(), grey(200));
    told = {sequence, image};
  };
  HeadModel model(settings);
  std::uint32_t id = 0;
  ASSERT_EQ(model.allocateSequence(2, id), Status::ok);
  EXPECT_NE(model.putImage(id, 2, makeUniform(small().projector, 200)), Status::ok);
  EXPECT_TRUE(told.empty()) << "a refused image is not stored";
  EXPECT_EQ(model.putImage(id, 1, makeUniform(small().projector, 200)), Status::ok);
  EXPECT_EQ(told, (std::vector<std::uint32_t>{id, 1}));
}

}  // namespace
}  // namespace fringix::head
