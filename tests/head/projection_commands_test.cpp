#include <chrono>
#include <numeric>

#include "head/optics/patterns.h"
#include "running_head.h"

namespace fringix::head {
namespace {

constexpr std::int32_t badParameter = -3;
constexpr std::int32_t unknownSequence = -20;

class ProjectionCommandsTest : public RunningHead {
 protected:
  ProjectionCommandsTest() : id(static_cast<std::int32_t>(allocate(3))) {
    EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 0, 0, 255, 0}), 0);
    EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 1, 0, 0, 0}), 0);
    EXPECT_EQ(ask("15MSG_SLSeqMakeImage", {id, 2, 0, 128, 0}), 0);
  }

  double meanOf(std::string_view command, std::initializer_list<std::int32_t> arguments = {}) {
    const auto bytes = askBytes(frameBytes, command, arguments);
    return std::accumulate(bytes.begin(), bytes.end(), 0.0) / frameBytes;
  }

  double liveMean() { return meanOf("41MSG_SLGetLiveImage"); }

  std::int32_t show(std::string_view command, std::initializer_list<std::int32_t> shape, const std::vector<std::uint8_t>& bytes) {
    say(command, shape);
    client->sendBytes(bytes);
    return client->receiveInt();
  }

  const std::int32_t id;
};

TEST_F(ProjectionCommandsTest, ShowsUploadedImages) {
  const double white = liveMean();
  EXPECT_EQ(show("00MSG_SLShowImage24", {32, 20, 96}, std::vector<std::uint8_t>(20 * 96, 0)), 0);
  EXPECT_LT(liveMean(), white / 3);
  EXPECT_EQ(show("01MSG_SLShowImage8", {32, 20, 32}, std::vector<std::uint8_t>(20 * 32, 255)), 0);
  EXPECT_NEAR(liveMean(), white, 3);
}

TEST_F(ProjectionCommandsTest, TakesPaddedAndSmallImages) {
  const double white = liveMean();
  EXPECT_EQ(show("01MSG_SLShowImage8", {32, 20, 96}, std::vector<std::uint8_t>(20 * 96, 255)), 0);
  EXPECT_NEAR(liveMean(), white, 3);
  EXPECT_EQ(show("00MSG_SLShowImage24", {16, 20, 50}, std::vector<std::uint8_t>(20 * 50, 255)), 0);
  EXPECT_LT(liveMean(), 0.8 * white);
}

TEST_F(ProjectionCommandsTest, ReadsARefusedImageToItsEnd) {
  EXPECT_EQ(show("00MSG_SLShowImage24", {33, 20, 99}, std::vector<std::uint8_t>(20 * 99)), badParameter);
  EXPECT_EQ(show("00MSG_SLShowImage24", {32, 20, 95}, std::vector<std::uint8_t>(20 * 95)), badParameter);
  EXPECT_EQ(show("01MSG_SLShowImage8", {32, 0, 32}, {}), badParameter);
  EXPECT_EQ(show("01MSG_SLShowImage8", {-1, 1, 8}, std::vector<std::uint8_t>(8)), badParameter);
  expectInStep();
}

TEST_F(ProjectionCommandsTest, ShowsImagesOfSequences) {
  EXPECT_EQ(ask("02MSG_SLShowFromSeq", {id, 1}), 0);
  EXPECT_LT(liveMean(), 40);
  EXPECT_EQ(ask("02MSG_SLShowFromSeq", {id, 0}), 0);
  EXPECT_GT(liveMean(), 80);
  EXPECT_EQ(ask("02MSG_SLShowFromSeq", {id, 3}), badParameter);
  EXPECT_EQ(ask("02MSG_SLShowFromSeq", {id + 1, 0}), unknownSequence);
}

TEST_F(ProjectionCommandsTest, AMeasurementStoresEveryImageOfTheSequence) {
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id}), 0);
  const double white = meanOf("43MSG_SLGetImageIndex", {0});
  const double grey = meanOf("43MSG_SLGetImageIndex", {2});
  EXPECT_LT(meanOf("222MSG_SLGetImageIndexEx", {1, 1}), grey - 20);
  EXPECT_LT(grey, white - 20);
}

TEST_F(ProjectionCommandsTest, APartialMeasurementIncludesItsLastImage) {
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 1, 2}), 0);
  EXPECT_EQ(askBytes(frameBytes, "43MSG_SLGetImageIndex", {0})[1], 0xFF) << "the marker: it was left out";
  EXPECT_GT(meanOf("43MSG_SLGetImageIndex", {1}), 1);
  EXPECT_GT(meanOf("43MSG_SLGetImageIndex", {2}), 1);
}

TEST_F(ProjectionCommandsTest, RefusesRangesThatTheSequenceDoesNotHave) {
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 1, 3}), badParameter);
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 2, 1}), badParameter);
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 0, -1}), badParameter);
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id + 1, 0, 1}), unknownSequence);
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id + 1}), unknownSequence);
  expectInStep();
}

TEST_F(ProjectionCommandsTest, FailsAsTold) {
  server.model().setMeasurementFault(-2);
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id}), -2);
  server.model().setMeasurementFault(77);
  EXPECT_EQ(ask("61MSG_SLStartFromTo", {id, 0, 1}), 77);
  server.model().setMeasurementFault(0);
  EXPECT_EQ(ask("60MSG_SLStartMeasurement", {id}), 0);
}

TEST_F(ProjectionCommandsTest, TakesItsTimeForEachImageAndCanBeStoppedMeanwhile) {
  HeadSettings settings = smallHead();
  settings.address = "127.0.0.3";
  settings.imageTime = std::chrono::milliseconds(60);
  HeadServer slow(settings);
  slow.start();
  RawClient other("127.0.0.3");
  other.greet();
  other.sendText("11MSG_SLSeqAlloc");
  other.sendInts({100});
  const std::int32_t sequence = other.receiveInt();
  other.receiveInt();
  const auto begin = std::chrono::steady_clock::now();
  other.sendText("61MSG_SLStartFromTo");
  other.sendInts({sequence, 0, 1});
  EXPECT_EQ(other.receiveInt(), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
  other.sendText("60MSG_SLStartMeasurement");
  other.sendInts({sequence});
  slow.stop();
  EXPECT_TRUE(other.closedByHead());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << "100 images would take 6 seconds";
}

TEST_F(ProjectionCommandsTest, CanBeStoppedWhileItComputesWithoutAPause) {
  HeadSettings settings = smallHead();
  settings.address = "127.0.0.3";
  settings.camera = {640, 512};
  HeadServer busy(settings);
  busy.start();
  RawClient other("127.0.0.3");
  other.greet();
  other.sendText("11MSG_SLSeqAlloc");
  other.sendInts({256});
  const std::int32_t sequence = other.receiveInt();
  other.receiveInt();
  const auto measure = [&](std::int32_t last) {
    other.sendText("61MSG_SLStartFromTo");
    other.sendInts({sequence, 0, last});
    EXPECT_EQ(other.receiveInt(), 0);
  };
  measure(0);  // for what is computed once
  const auto begin = std::chrono::steady_clock::now();
  measure(7);
  const auto eightImages = std::chrono::steady_clock::now() - begin;
  other.sendText("60MSG_SLStartMeasurement");
  other.sendInts({sequence});
  busy.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 16 * eightImages) << "all images would take 32 times as long";
}

}  // namespace
}  // namespace fringix::head
