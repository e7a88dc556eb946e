// The whole way, from rendered pictures to points.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "rendering.h"
#include "scan/failure.h"
#include "scan/scanner.h"

namespace fringix::scan::test {
namespace {

struct Result {
  std::vector<float> points;
  std::vector<float> sigma;
  std::vector<std::uint8_t> reason;
  Findings findings;

  Cloud room(std::size_t pixels) {
    points.resize(3 * pixels);
    sigma.resize(pixels);
    reason.resize(pixels);
    Cloud cloud;
    cloud.points = points.data();
    cloud.sigma = sigma.data();
    cloud.reason = reason.data();
    return cloud;
  }
};

Result scanOf(const Calibration& head, const Rendering& rendering, const PlanSettings& plan, const Light& light,
              const ScanSettings& settings = {}, std::size_t camera = 0) {
  Scanner scanner(plan, head, settings);
  const auto pictures = rendering.pictures(scanner.plan(), light);
  Result result;
  result.findings = scanner.compute(camera, pointersTo(pictures), result.room(rendering.pixels()));
  return result;
}

// How far a point is from the true one, towards or away from the camera.
double errorOf(const Result& result, const Rendering& rendering, std::size_t pixel) {
  const Vector& truth = rendering.truth(pixel).point;
  double square = 0;
  for (std::size_t i = 0; i < 3; ++i) square += std::pow(static_cast<double>(result.points[3 * pixel + i]) - truth[i], 2);
  return std::copysign(std::sqrt(square), static_cast<double>(result.points[3 * pixel + 2]) - truth[2]);
}

Scene tiltedPlane() { return plane({0.2, -0.1, 1}, 400); }

const PlanSettings gray = defaultSettings(Method::grayAndPhase, 1280);
const PlanSettings three = defaultSettings(Method::threeFrequencies, 1280);

class ScannerMethodTest : public testing::TestWithParam<Method> {
 protected:
  const PlanSettings plan = defaultSettings(GetParam(), 1280);
};

INSTANTIATE_TEST_SUITE_P(Methods, ScannerMethodTest, testing::Values(Method::grayAndPhase, Method::threeFrequencies));

// The rounding to grey levels scatters; what is left of it in a mean over 64 pixels is below the limit.
TEST_P(ScannerMethodTest, HasNoSystematicErrorWithDistortionOnBothSides) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, tiltedPlane());
  const Result result = scanOf(head, rendering, plan, {});
  double worst = 0;
  for (std::size_t row = 0; row + 8 <= 240; row += 8) {
    for (std::size_t column = 0; column + 8 <= 320; column += 8) {
      double sum = 0;
      int count = 0;
      for (std::size_t i = 0; i < 64; ++i) {
        const std::size_t pixel = (row + i / 8) * 320 + column + i % 8;
        if (result.reason[pixel] != 0) continue;
        sum += errorOf(result, rendering, pixel);
        ++count;
      }
      if (count >= 32) worst = std::max(worst, std::abs(sum / count));
    }
  }
  RecordProperty("worst_mm", std::to_string(worst));
  EXPECT_LT(worst, 0.01);
  EXPECT_GT(worst, 0);
}

TEST_P(ScannerMethodTest, MeasuresNearlyAllThatIsLit) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, tiltedPlane());
  const Result result = scanOf(head, rendering, plan, {.noise = 1});
  std::size_t lit = 0;
  for (std::size_t i = 0; i < rendering.pixels(); ++i) lit += rendering.truth(i).lit ? 1U : 0U;
  EXPECT_GT(lit, rendering.pixels() / 2);
  EXPECT_GT(static_cast<double>(result.findings.counts[0]), 0.98 * static_cast<double>(lit));
}

// The Cramer-Rao bound of the phase, from the information that the levels of the steps carry about mean, amplitude and phase.
double boundOfColumn(const PlanSettings& plan, double amplitude, double mean, const Light& light) {
  double information[3][3] = {};
  for (int step = 0; step < plan.steps; ++step) {
    const double angle = 2 * std::numbers::pi * (step + 0.3) / plan.steps;
    const double gradient[3] = {1, std::cos(angle), -amplitude * std::sin(angle)};
    const double variance = light.noise * light.noise + light.variancePerLevel * (mean + amplitude * std::cos(angle)) + 1.0 / 12;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) information[i][j] += gradient[i] * gradient[j] / variance;
    }
  }
  const auto& m = information;
  const double determinant = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  const double variance = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) / determinant;
  return std::sqrt(variance) * plan.period / (2 * std::numbers::pi);
}

// What the projector's blur and its boxes leave of the cosine's amplitude.
double amplitudeOf(const PlanSettings& plan, const Light& light) {
  const double turn = 2 * std::numbers::pi / plan.period;
  return (light.bright - light.dark) / 2 * std::exp(-turn * turn * light.blur * light.blur / 2) * std::sin(turn / 2) / (turn / 2);
}

class NoiseLevelTest : public testing::TestWithParam<double> {};

INSTANTIATE_TEST_SUITE_P(GreyLevels, NoiseLevelTest, testing::Values(0.5, 1.0, 2.0, 4.0));

struct Spread {
  double relative = 0;  // root mean square of error in bounds
  double beyond = 0;    // share beyond 5 expected deviations
  double expected = 0;  // mean of the expected deviation in bounds
};

Spread spreadOf(const Result& result, const Rendering& rendering, double columnBound) {
  Spread spread;
  double count = 0;
  for (std::size_t i = 0; i < rendering.pixels(); ++i) {
    if (result.reason[i] != 0) continue;
    const double error = errorOf(result, rendering, i);
    const double bound = columnBound * rendering.truth(i).alongRay;
    spread.relative += error * error / (bound * bound);
    spread.expected += static_cast<double>(result.sigma[i]) / bound;
    spread.beyond += std::abs(error) > 5 * static_cast<double>(result.sigma[i]) ? 1 : 0;
    ++count;
  }
  return {std::sqrt(spread.relative / count), spread.beyond / count, spread.expected / count};
}

void expectNearTheBound(const PlanSettings& plan, const Light& light, const char* name) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, tiltedPlane());
  ScanSettings settings;
  settings.decode.noise = {light.noise, light.variancePerLevel};
  settings.triangulation.sigma = 1;
  const Result result = scanOf(head, rendering, plan, light, settings);
  const double mean = (light.bright + light.dark) / 2;
  const Spread spread = spreadOf(result, rendering, boundOfColumn(plan, amplitudeOf(plan, light), mean, light));
  testing::Test::RecordProperty(name, std::to_string(spread.relative));
  EXPECT_LT(spread.relative, 1.15);
  EXPECT_GT(spread.relative, 0.85) << "nothing is better than the bound";
  EXPECT_NEAR(spread.expected, 1, 0.1) << "what is told of a point's deviation is what the bound allows";
  EXPECT_LT(spread.beyond, 0.001);
}

TEST_P(NoiseLevelTest, StaysNearTheCramerRaoBound) { expectNearTheBound(gray, {.noise = GetParam()}, "gray"); }
TEST_P(NoiseLevelTest, StaysNearTheCramerRaoBoundWithThreeFrequencies) { expectNearTheBound(three, {.noise = GetParam()}, "three"); }
TEST_P(NoiseLevelTest, IsMeasured) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, tiltedPlane());
  const Result result = scanOf(head, rendering, gray, {.noise = GetParam()});
  EXPECT_NEAR(result.findings.measuredNoise, std::hypot(GetParam(), std::sqrt(1.0 / 12)), 0.05 * GetParam() + 0.02);
}

TEST(SignalNoiseTest, StaysNearTheCramerRaoBound) { expectNearTheBound(gray, {.noise = 0.5, .variancePerLevel = 0.02}, "signal"); }

TEST(GrossErrorTest, AreNoneAtTwoLevelsOfNoise) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, sphere({10, -5, 420}, 60));
  ScanSettings settings;
  settings.decode.noise.floor = 2;
  settings.clean.on = false;
  for (const PlanSettings& plan : {gray, three}) {
    const Result result = scanOf(head, rendering, plan, {.noise = 2}, settings);
    EXPECT_GT(result.findings.counts[0], 5000U);
    for (std::size_t i = 0; i < rendering.pixels(); ++i) {
      if (result.reason[i] != 0) continue;
      ASSERT_LT(std::abs(errorOf(result, rendering, i)), 7 * static_cast<double>(result.sigma[i]))
          << i << ", column " << rendering.truth(i).column << ", lit " << rendering.truth(i).lit << ", period " << plan.period;
    }
  }
}

TEST(ScannerPropertyTest, ARandomPlaneSeenByARandomHeadThroughARandomPlanComesBack) {
  std::mt19937 chance(4711);
  std::uniform_real_distribution<double> share(-1, 1);
  for (int round = 0; round < 12; ++round) {
    const Calibration head = randomHead(chance);
    const Method method = share(chance) < 0 ? Method::grayAndPhase : Method::threeFrequencies;
    PlanSettings plan = defaultSettings(method, 1280);
    plan.steps = 6 + static_cast<std::int32_t>(4 + 4 * share(chance));
    plan.period = method == Method::grayAndPhase ? 14 + static_cast<std::int32_t>(4 * share(chance)) : plan.period;
    const Rendering rendering(head, 0, plane({0.3 * share(chance), 0.3 * share(chance), 1}, 400 + 80 * share(chance)));
    ScanSettings settings;
    settings.decode.noise.floor = 0.5;
    const Result result = scanOf(head, rendering, plan, {.noise = 0.5}, settings);
    ASSERT_GT(result.findings.counts[0], rendering.pixels() / 20) << round;
    double square = 0;
    for (std::size_t i = 0; i < rendering.pixels(); ++i) {
      if (result.reason[i] == 0) square += std::pow(errorOf(result, rendering, i), 2);
    }
    const double rms = std::sqrt(square / static_cast<double>(result.findings.counts[0]));
    EXPECT_LT(rms, 1.1 * result.findings.expectedSigma) << "round " << round << ", period " << plan.period << ", steps " << plan.steps;
  }
}

std::vector<std::uint32_t> bits(const std::vector<float>& values) {
  std::vector<std::uint32_t> bits;
  for (const float value : values) bits.push_back(std::bit_cast<std::uint32_t>(value));
  return bits;
}

TEST(ScannerTest, GivesTheSameForAnyNumberOfThreadsAndWhenPicturesComeOneAtATime) {
  const Calibration head = smallHead(333, 77);  // no multiple of a strip
  const Rendering rendering(head, 0, nearestOf(tiltedPlane(), sphere({0, 0, 350}, 20)));
  const Light light{.noise = 1};
  const Result one = scanOf(head, rendering, gray, light);
  ScanSettings settings;
  settings.threads = 5;
  const Result five = scanOf(head, rendering, gray, light, settings);
  EXPECT_EQ(bits(one.points), bits(five.points));
  EXPECT_EQ(bits(one.sigma), bits(five.sigma));
  EXPECT_EQ(one.findings.counts, five.findings.counts);
  EXPECT_EQ(one.findings.expectedSigma, five.findings.expectedSigma);

  Scanner scanner(gray, head, settings);
  for (std::size_t i = 0; i < scanner.plan().pictures().size(); ++i) scanner.add(0, rendering.picture(scanner.plan(), i, light).data());
  Result streamed;
  streamed.findings = scanner.finish(0, streamed.room(rendering.pixels()));
  EXPECT_EQ(bits(one.points), bits(streamed.points));
  EXPECT_EQ(one.reason, streamed.reason);
  EXPECT_EQ(one.findings.counts, streamed.findings.counts);
  EXPECT_EQ(one.findings.measuredNoise, streamed.findings.measuredNoise);
  EXPECT_EQ(one.findings.flicker, streamed.findings.flicker);
}

TEST(ScannerTest, PutsBothCamerasIntoOneFrame) {
  Calibration head = smallHead();
  Optics second = head.cameras[0];
  second.rotation = turned(0.01, -0.3, 0.02);
  second.translation = {20, -5, 15};
  head.cameras.push_back(second);
  const Rendering rendering(head, 1, tiltedPlane());
  const Result result = scanOf(head, rendering, gray, {}, {}, 1);
  ASSERT_GT(result.findings.counts[0], 5000U);
  for (std::size_t i = 0; i < rendering.pixels(); ++i) {
    if (result.reason[i] != 0) continue;
    ASSERT_LT(std::abs(errorOf(result, rendering, i)), 5 * static_cast<double>(result.sigma[i])) << i;
  }
}

TEST(ScannerTest, TellsFlicker) {
  const Calibration head = smallHead();
  const Rendering rendering(head, 0, tiltedPlane());
  Scanner scanner(gray, head, {});
  auto pictures = rendering.pictures(scanner.plan(), {});
  Result result;
  EXPECT_FALSE(scanner.compute(0, pointersTo(pictures), result.room(rendering.pixels())).flickers);
  for (std::uint8_t& level : pictures[14]) level = static_cast<std::uint8_t>(level * 0.95);
  const Findings findings = scanner.compute(0, pointersTo(pictures), result.room(rendering.pixels()));
  EXPECT_TRUE(findings.flickers);
  EXPECT_NEAR(findings.flicker, 0.05, 0.01);
}

TEST(ScannerTest, TellsMotionAndDropsWhatMoved) {
  const Calibration head = smallHead();
  const Rendering before(head, 0, nearestOf(tiltedPlane(), sphere({0, 0, 340}, 30)));
  const Rendering behind(head, 0, nearestOf(tiltedPlane(), sphere({3, 0, 335}, 30)));
  Scanner scanner(gray, head, {});
  auto pictures = before.pictures(scanner.plan(), {});
  Result result;
  EXPECT_FALSE(scanner.compute(0, pointersTo(pictures), result.room(before.pixels())).moves);
  for (std::size_t i = 15; i < 20; ++i) pictures[i] = behind.picture(scanner.plan(), i, {});
  const Findings findings = scanner.compute(0, pointersTo(pictures), result.room(before.pixels()));
  EXPECT_TRUE(findings.moves);
  EXPECT_GT(findings.counts[static_cast<std::size_t>(Reason::unsteady)], 500U);
}

template <class Body>
std::string failureOf(Body&& body, Status status) {
  try {
    body();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), status);
    return failure.what();
  }
  return "";
}

TEST(ScannerRefusalTest, NamesThePictureThatIsMissing) {
  const Calibration head = smallHead(64, 48);
  Scanner scanner(gray, head, {});
  std::vector<std::uint8_t> picture(64 * 48);
  std::vector<const std::uint8_t*> pictures(20, picture.data());
  Result result;
  const Cloud cloud = result.room(64 * 48);
  pictures[7] = nullptr;
  EXPECT_EQ(failureOf([&] { scanner.compute(0, pictures, cloud); }, Status::badPictures), "picture 7 is missing");
  pictures.pop_back();
  EXPECT_EQ(failureOf([&] { scanner.compute(0, pictures, cloud); }, Status::badPictures), "19 pictures were given; the plan has 20");
  for (int i = 0; i < 3; ++i) scanner.add(0, picture.data());
  EXPECT_EQ(failureOf([&] { scanner.finish(0, cloud); }, Status::badPictures), "picture 3 is missing; the plan has 20");
  for (int i = 3; i < 20; ++i) scanner.add(0, picture.data());
  EXPECT_EQ(failureOf([&] { scanner.add(0, picture.data()); }, Status::badPictures), "all 20 pictures of the plan are there already");
}

TEST(ScannerRefusalTest, NamesWhatDoesNotFit) {
  const Calibration head = smallHead(64, 48);
  EXPECT_EQ(failureOf([&] { Scanner(defaultSettings(Method::grayAndPhase, 912), head, {}); }, Status::badParameter),
            "the plan is for a projector of 912 columns, the calibration for one of 1280");
  Scanner scanner(gray, head, {});
  EXPECT_EQ(failureOf([&] { scanner.add(1, nullptr); }, Status::badParameter), "there is no camera 1; the calibration has 1");
  ScanSettings settings;
  settings.threads = 0;
  EXPECT_EQ(failureOf([&] { Scanner(gray, head, settings); }, Status::badParameter), "settings: 1 to 256 threads are possible");
}

TEST(ScannerTest, ConstantPicturesGiveNoPoint) {
  const Calibration head = smallHead(64, 48);
  Scanner scanner(gray, head, {});
  const std::vector<std::uint8_t> picture(64 * 48, 100);
  Result result;
  const Findings findings = scanner.compute(0, std::vector<const std::uint8_t*>(20, picture.data()), result.room(64 * 48));
  EXPECT_EQ(findings.counts[0], 0U);
  EXPECT_EQ(findings.counts[static_cast<std::size_t>(Reason::noise)], 64U * 48U);
  for (const float value : result.points) ASSERT_TRUE(std::isnan(value));
}

}  // namespace
}  // namespace fringix::scan::test
