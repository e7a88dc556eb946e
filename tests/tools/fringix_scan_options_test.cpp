// The built program scanning with more than the usual: other patterns, cameras, exposures, and less of the picture.
#include <gtest/gtest.h>

#include <cmath>

#include "png/png_decoder.h"
#include "scanned_head.h"

namespace fringix::test {
namespace {

class FringixScanCapture : public FringixScan {};
class FringixScanRegion : public FringixScan {};

TEST_F(FringixScanCapture, GeneratedPatternsMeasureTheSame) {
  ASSERT_EQ(scan("127.0.0.1 --truth --raw").exitCode, 0);
  const Outcome outcome = scan("127.0.0.1 --truth --raw --generate", "generated");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(facts("generated").at("/plan/generated").dump(), "true");
  const ScannedCloud uploaded(file("cloud.pcd"));
  const ScannedCloud generated(file("cloud.pcd", "generated"));
  double squares = 0;
  double mean = 0;
  double count = 0;
  for (std::size_t i = 0; i < uploaded.pixels(); ++i) {
    if (!uploaded.hasPoint(i) || !generated.hasPoint(i)) continue;
    const double difference = uploaded.distance(i) - generated.distance(i);
    const double expected = std::hypot(uploaded.sigma(i), generated.sigma(i));
    squares += difference * difference / (expected * expected);
    mean += difference;
    ++count;
  }
  EXPECT_GT(count, 0.5 * 320 * 256);
  EXPECT_LT(std::sqrt(squares / count), 1.25) << "in expected deviations";
  EXPECT_LT(std::abs(mean / count), 0.005) << "in mm";
  EXPECT_LT(facts("generated").at("/errorsInMm/true/rootMeanSquare").number(), 0.035);
  server_->stop();
  ASSERT_EQ(scan("--from " + inQuotes(scratch_ / "generated"), "again").exitCode, 0);
  EXPECT_TRUE(file("range.npy", "generated") == file("range.npy", "again"));
}

TEST_F(FringixScanCapture, BothCamerasMakeOneCloud) {
  const Outcome outcome = scan("127.0.0.1 --truth --raw --channel 0,1");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(facts().at("/channels").dump(), "[0,1]");
  EXPECT_LT(facts().at("/errorsInMm/true/rootMeanSquare").number(), 0.05);
  EXPECT_LT(std::abs(facts().at("/errorsInMm/true/mean").number()), 0.01);
  EXPECT_TRUE(std::filesystem::exists(scratch_ / "out" / "raw-37.png")) << "19 pictures of each";
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "out" / "raw-38.png"));
  for (const char* name : {"range", "depth", "depth-preview"}) {
    const std::string extension = std::string(name) == "range" ? ".npy" : ".png";
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "out" / (name + extension))) << name;
    for (const char* channel : {"-0", "-1"})
      EXPECT_TRUE(std::filesystem::exists(scratch_ / "out" / (name + std::string(channel) + extension)));
  }
  server_->stop();
  ASSERT_EQ(scan("--truth --from " + inQuotes(scratch_ / "out"), "again").exitCode, 0);
  EXPECT_TRUE(file("cloud.ply") == file("cloud.ply", "again"));
  EXPECT_TRUE(file("range-1.npy") == file("range-1.npy", "again"));
}

TEST_F(FringixScanCapture, BothCamerasMeasureWhatEachMeasuresAlone) {
  ASSERT_EQ(scan("127.0.0.1 --channel all", "both").exitCode, 0);
  const double points = facts("both").at("/points").number();
  double sum = 0;
  for (const char* channel : {"0", "1"}) {
    startAnew();
    ASSERT_EQ(scan(std::string("127.0.0.1 --channel ") + channel, channel).exitCode, 0);
    EXPECT_TRUE(file("range.npy", channel) == file(std::string("range-") + channel + ".npy", "both")) << channel;
    sum += facts(channel).at("/points").number();
  }
  EXPECT_EQ(points, sum);
  EXPECT_NE(file("cloud.ply", "both").find("\nelement vertex " + std::to_string(static_cast<int>(sum)) + "\n"), std::string::npos);
  EXPECT_NE(file("cloud.pcd", "both").find("\nHEIGHT 1\n"), std::string::npos) << "pixels of two cameras have no order";
}

TEST_F(FringixScanRegion, ARegionHasTheVeryPointsOfTheWholePicture) {
  ASSERT_EQ(scan("127.0.0.1 --raw").exitCode, 0);
  startAnew();
  const Outcome outcome = scan("127.0.0.1 --raw --roi 83,60,120x100", "part");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  server_->stop();
  ASSERT_EQ(scan("--roi 83,60,120,100 --from " + inQuotes(scratch_ / "out"), "cut").exitCode, 0);
  ASSERT_EQ(scan("--from " + inQuotes(scratch_ / "part"), "again").exitCode, 0);
  const ScannedCloud whole(file("cloud.pcd"));
  for (const char* folder : {"part", "cut", "again"}) {
    EXPECT_EQ(facts(folder).at("/roi").dump(), R"({"height":100,"width":120,"x":83,"y":60})");
    EXPECT_EQ(facts(folder).at("/width").number(), 120);
    const ScannedCloud part(file("cloud.pcd", folder));
    ASSERT_EQ(part.pixels(), 120U * 100);
    std::size_t different = 0;
    for (std::size_t i = 0; i < part.pixels(); ++i)
      different += part.bytes(i) == whole.bytes((60 + i / 120) * 320 + 83 + i % 120) ? 0U : 1U;
    EXPECT_EQ(different, 0U) << folder;
    EXPECT_GT(facts(folder).at("/points").number(), 6000);
  }
  EXPECT_NE(scan("--roi 0,0,10x10 --from " + inQuotes(scratch_ / "part"), "other").errors.find("one region only"), std::string::npos);
}

TEST_F(FringixScanRegion, ARegionOutsideOfThePictureIsRefused) {
  const Outcome outcome = scan("127.0.0.1 --roi 300,0,21x10");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("a region of 21 x 10 pixels at 300, 0 does not lie within the camera's 320 x 256"), std::string::npos)
      << outcome.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "1\n");
  EXPECT_EQ(scan("127.0.0.1 --roi 1,2,3").exitCode, 2);
  EXPECT_EQ(scan("127.0.0.1 --roi 1,2x3,4").exitCode, 2);
}

class FringixScanShine : public FringixScan {
 protected:
  static head::HeadSettings shinyHead() {
    head::HeadSettings settings = scannedHead();
    settings.shine = 5;
    return settings;
  }

  FringixScanShine() : FringixScan(shinyHead()) {}

  // The share of the points that lie farther from the scene than 5 of their expected deviations.
  double shareBeyond(const std::string& folder) const {
    const tool::Truth truth = tool::readTruth(file("truth.json", folder));
    const ScannedCloud cloud(file("cloud.pcd", folder));
    double points = 0;
    double beyond = 0;
    for (std::size_t i = 0; i < cloud.pixels(); ++i) {
      if (!cloud.hasPoint(i)) continue;
      ++points;
      beyond += std::abs(tool::errorOf(truth, cloud.point(i))) > 5 * cloud.sigma(i) ? 1 : 0;
    }
    return beyond / points;
  }
};

TEST_F(FringixScanShine, ASeriesOfExposuresMeasuresWhatDazzlesASingleOne) {
  ASSERT_EQ(scan("127.0.0.1 --truth --raw", "single").exitCode, 0);
  const Outcome outcome = scan("127.0.0.1 --truth --raw --hdr 3");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(facts().at("/exposuresInUs").dump(), "[20000,5000,80000]");
  EXPECT_GT(facts("single").at("/pixels/saturation").number(), 1000);
  EXPECT_LT(facts().at("/pixels/saturation").number(), 0.2 * facts("single").at("/pixels/saturation").number());
  EXPECT_GT(facts().at("/points").number(), 1.02 * facts("single").at("/points").number());
  EXPECT_LT(shareBeyond("out"), 0.001);
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "get 127.0.0.1 exposure").output, "20000\n") << "as it was before";
  server_->stop();
  ASSERT_EQ(scan("--from " + inQuotes(scratch_ / "out"), "again").exitCode, 0);
  EXPECT_TRUE(file("range.npy") == file("range.npy", "again"));
}

TEST_F(FringixScanShine, ExposuresCanBeNamed) {
  ASSERT_EQ(scan("127.0.0.1 --exposure 20000", "usual").exitCode, 0);
  ASSERT_EQ(scan("127.0.0.1 --exposure 5000", "short").exitCode, 0);
  EXPECT_LT(facts("short").at("/pixels/saturation").number(), 0.2 * facts("usual").at("/pixels/saturation").number());
  ASSERT_EQ(scan("127.0.0.1 --exposure 20000,5000", "both").exitCode, 0);
  EXPECT_GT(facts("both").at("/points").number(), facts("usual").at("/points").number());
  EXPECT_GT(facts("both").at("/points").number(), facts("short").at("/points").number());
}

TEST_F(FringixScanShine, AnExposureThatTheHeadRefusesLeavesItInOrder) {
  const Outcome outcome = scan("127.0.0.1 --exposure 20000,5000000");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("the head refuses an exposure of 5000000 us"), std::string::npos) << outcome.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "get 127.0.0.1 exposure").output, "20000\n");
  EXPECT_NE(runProgram(FRINGIX_TOOL, "pattern free 127.0.0.1 1").exitCode, 0) << "the sequence is freed";
  for (const char* usage : {"--exposure 0", "--exposure 1,2,3,4,5,6", "--exposure 10,10", "--exposure ,", "--hdr 1", "--hdr 6",
                            "--hdr 2 --exposure 100", "--channel 0,0", "--channel 4", "--channel both"}) {
    EXPECT_EQ(scan(std::string("127.0.0.1 ") + usage).exitCode, 2) << usage;
  }
}

TEST_F(FringixScanCapture, WhatOnlyAHeadCanDoIsRefusedForAFolder) {
  for (const char* option : {"--hdr 2", "--exposure 100", "--channel 1", "--generate"}) {
    const Outcome outcome = scan(std::string("--from nowhere ") + option);
    EXPECT_EQ(outcome.exitCode, 2) << option;
    EXPECT_NE(outcome.errors.find("have been taken"), std::string::npos) << outcome.errors;
  }
}

TEST_F(FringixScanCapture, DepthsAreLevelsTimesTheScaleInTheUnitThatThePictureNames) {
  ASSERT_EQ(scan("127.0.0.1 --raw").exitCode, 0);
  ASSERT_EQ(scan("--unit m --from " + inQuotes(scratch_ / "out"), "metres").exitCode, 0);
  for (const std::string folder : {"out", "metres"}) {
    const DecodedPng depth = decodePng(file("depth.png", folder));
    EXPECT_EQ(depth.texts.at("Unit"), folder == "out" ? "mm" : "m");
    const double scale = std::stod(depth.texts.at("Scale"));
    const ScannedCloud cloud(file("cloud.pcd", folder));
    ASSERT_EQ(depth.width * depth.height, cloud.pixels());
    for (std::size_t i = 0; i < cloud.pixels(); ++i) {
      const double level = 256 * depth.samples[2 * i] + depth.samples[2 * i + 1];
      ASSERT_EQ(level > 0, cloud.hasPoint(i)) << i;
      if (cloud.hasPoint(i)) {
        ASSERT_NEAR(level * scale, cloud.point(i)[2], 0.501 * scale) << i;
      }
    }
  }
}

}  // namespace
}  // namespace fringix::test
