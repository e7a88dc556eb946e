#include <gtest/gtest.h>

#include <algorithm>

#include "head/digits.h"
#include "head/head_model.h"

namespace fringix::head {
namespace {

HeadSettings headWithCamera(Size camera) {
  HeadSettings settings;
  settings.camera = camera;
  return settings;
}

TEST(HeadModelTest, NoTwoPicturesAreEqual) {
  HeadModel model(headWithCamera({320, 240}));
  Picture first;
  Picture second;
  model.takeLivePicture(first);
  model.takeLivePicture(second);
  EXPECT_EQ(first.size, (Size{320, 240}));
  EXPECT_EQ(first.pixels.size(), 320U * 240U);
  EXPECT_NE(first.pixels, second.pixels);
}

TEST(HeadModelTest, HeadsWithDifferentSerialsHaveDifferentPictures) {
  HeadSettings settings = headWithCamera({320, 240});
  HeadModel one(settings);
  settings.serial += 1;
  HeadModel other(settings);
  Picture first;
  Picture second;
  one.takeLivePicture(first);
  other.takeLivePicture(second);
  EXPECT_NE(first.pixels, second.pixels);
}

TEST(HeadModelTest, NoPixelIsZero) {
  HeadModel model(headWithCamera({160, 120}));
  Picture picture;
  model.takeLivePicture(picture);
  EXPECT_EQ(std::count(picture.pixels.begin(), picture.pixels.end(), 0), 0);
}

TEST(HeadModelTest, TheSmallestCameraHasAPicture) {
  HeadModel model(headWithCamera({1, 1}));
  Picture picture;
  model.takeLivePicture(picture);
  EXPECT_EQ(picture.pixels.size(), 1U);
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
