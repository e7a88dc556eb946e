// A part of the picture gives the points that the whole picture gives there, to the last bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "rendering.h"
#include "scan/failure.h"
#include "scan/scanner.h"

namespace fringix::scan::test {
namespace {

constexpr std::int32_t width = 333;
constexpr std::int32_t height = 121;

struct Result {
  explicit Result(std::size_t pixels) : points(3 * pixels), normals(3 * pixels), sigma(pixels), reason(pixels) {}

  Cloud room() {
    Cloud cloud;
    cloud.points = points.data();
    cloud.normals = normals.data();
    cloud.sigma = sigma.data();
    cloud.reason = reason.data();
    return cloud;
  }

  std::vector<float> points;
  std::vector<float> normals;
  std::vector<float> sigma;
  std::vector<std::uint8_t> reason;
};

using Pictures = std::vector<std::vector<std::uint8_t>>;

Pictures cut(const Pictures& pictures, const Window& window) {
  Pictures parts;
  for (const auto& picture : pictures) {
    auto& part = parts.emplace_back();
    for (std::int32_t row = 0; row < window.height; ++row) {
      const auto first = picture.begin() + (window.y + row) * width + window.x;
      part.insert(part.end(), first, first + window.width);
    }
  }
  return parts;
}

// Pixels of `inner` whose results differ; `window` is what the part shows.
std::size_t differences(const Result& whole, const Result& part, const Window& window, const Window& inner) {
  std::size_t count = 0;
  for (std::int32_t row = inner.y; row < inner.y + inner.height; ++row) {
    for (std::int32_t column = inner.x; column < inner.x + inner.width; ++column) {
      const auto i = static_cast<std::size_t>(row * width + column);
      const auto j = static_cast<std::size_t>((row - window.y) * window.width + column - window.x);
      bool same = whole.reason[i] == part.reason[j] && std::bit_cast<int>(whole.sigma[i]) == std::bit_cast<int>(part.sigma[j]);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        same = same && std::bit_cast<int>(whole.points[3 * i + axis]) == std::bit_cast<int>(part.points[3 * j + axis]) &&
               std::bit_cast<int>(whole.normals[3 * i + axis]) == std::bit_cast<int>(part.normals[3 * j + axis]);
      }
      count += same ? 0U : 1U;
    }
  }
  return count;
}

class WindowTest : public testing::Test {
 protected:
  const Calibration head = smallHead(width, height);
  const Rendering rendering{head, 0, nearestOf(plane({0.2, -0.1, 1}, 400), sphere({0, 0, 350}, 20))};
  const ScanSettings settings = [] {
    ScanSettings noisy;  // as noisy as the pictures, or the noise that each part shows would count
    noisy.decode.noise.floor = 4;
    return noisy;
  }();
  Scanner scanner{defaultSettings(Method::grayAndPhase, 1280), head, settings};
  const Pictures pictures = rendering.pictures(scanner.plan(), {.noise = 4});

  Result scan(const Window& window) {
    scanner.use(0, window);
    Result result(window.pixels());
    const Pictures parts = cut(pictures, window);
    scanner.compute(0, pointersTo(parts), result.room());
    return result;
  }
};

TEST_F(WindowTest, HasThePointsOfTheWholePictureInsideOfAMargin) {
  const Result whole = scan({0, 0, width, height});
  const std::int32_t margin = CleanLimits{}.leastPatch;
  for (const Window& window : {Window{37, 5, 251, 110}, Window{0, 0, 200, height}, Window{133, 11, 200, 110}}) {
    const std::int32_t left = window.x == 0 ? 0 : margin;
    const std::int32_t right = window.x + window.width == width ? 0 : margin;
    const std::int32_t top = window.y == 0 ? 0 : margin;
    const std::int32_t bottom = window.y + window.height == height ? 0 : margin;
    const Window inner{window.x + left, window.y + top, window.width - left - right, window.height - top - bottom};
    ASSERT_TRUE(inner.liesWithin(width, height));
    const Result part = scan(window);
    EXPECT_EQ(differences(whole, part, window, inner), 0U) << window.x;
    EXPECT_GT(differences(whole, part, window, window), 0U) << "the margin is needed";
  }
}

TEST_F(WindowTest, WithoutCleaningAndNormalsNeedsNoMargin) {
  ScanSettings uncleaned = settings;
  uncleaned.clean.on = false;
  Scanner plain(defaultSettings(Method::grayAndPhase, 1280), head, uncleaned);
  Result whole(rendering.pixels());
  plain.compute(0, pointersTo(pictures), whole.room());
  const Window window{37, 5, 251, 110};
  plain.use(0, window);
  Result part(window.pixels());
  const Pictures parts = cut(pictures, window);
  for (const auto& picture : parts) plain.add(0, picture.data());
  plain.finish(0, part.room());
  std::fill(whole.normals.begin(), whole.normals.end(), 0.0F);
  std::fill(part.normals.begin(), part.normals.end(), 0.0F);
  EXPECT_EQ(differences(whole, part, window, window), 0U);
}

TEST_F(WindowTest, OneThatLeavesThePictureIsRefused) {
  for (const Window& window : {Window{-1, 0, 5, 5}, Window{0, 0, 0, 5}, Window{330, 0, 4, 5}, Window{0, 121, 4, 1}, Window{0, 0, 4, 122}})
    EXPECT_THROW(scanner.use(0, window), Failure) << window.x << ", " << window.y;
  scanner.use(0, {332, 120, 1, 1});
  EXPECT_EQ(scanner.window(0).pixels(), 1U);
}

TEST(WindowPlaceTest, LiesWithinAPictureOrDoesNot) {
  for (const Window& within : {Window{0, 0, 20, 10}, Window{19, 9, 1, 1}, Window{5, 5, 15, 5}}) EXPECT_TRUE(within.liesWithin(20, 10));
  for (const Window& beyond :
       {Window{-1, 0, 5, 5}, Window{0, -1, 5, 5}, Window{0, 0, 0, 5}, Window{0, 0, 5, 0}, Window{20, 0, 1, 1}, Window{0, 10, 1, 1},
        Window{0, 0, 21, 1}, Window{0, 0, 1, 11}, Window{1, 0, 20, 1}, Window{0, 1, 1, 10}, Window{2147483647, 0, 2147483647, 1}}) {
    EXPECT_FALSE(beyond.liesWithin(20, 10)) << beyond.x << ", " << beyond.y << ": " << beyond.width << " x " << beyond.height;
  }
}

TEST_F(WindowTest, NoNormalIsLeftWhereCleaningTookThePoint) {
  const Result whole = scan({0, 0, width, height});
  EXPECT_GT(std::count(whole.reason.begin(), whole.reason.end(), static_cast<std::uint8_t>(Reason::edge)), 20);
  for (std::size_t i = 0; i < whole.reason.size(); ++i) {
    ASSERT_TRUE(whole.reason[i] == 0 || std::isnan(whole.normals[3 * i])) << i;
  }
}

TEST_F(WindowTest, ForgetsThePicturesThatWereAdded) {
  scanner.add(0, pictures[0].data());
  scanner.use(0, {0, 0, 16, 16});
  Result result(256);
  EXPECT_THROW(scanner.finish(0, result.room()), Failure);
  EXPECT_THROW(scanner.use(1, {0, 0, 16, 16}), Failure);
}

}  // namespace
}  // namespace fringix::scan::test
