// The built program scanning what a simulated head sees.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "scanned_head.h"

namespace fringix::test {
namespace {

TEST_F(FringixScan, MeasuresTheUsualScene) {
  const Outcome outcome = scan("127.0.0.1 --truth");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_NE(outcome.output.find("true error"), std::string::npos) << outcome.output;
  const Json facts = this->facts();
  EXPECT_LT(facts.at("/errorsInMm/true/rootMeanSquare").number(), 0.035);
  EXPECT_LT(facts.at("/errorsInMm/true/within95").number(), 0.07);
  EXPECT_LT(std::abs(facts.at("/errorsInMm/true/mean").number()), 0.01);
  EXPECT_NEAR(facts.at("/errorsInMm/rootMeanSquareSigma").number(), facts.at("/errorsInMm/true/rootMeanSquare").number(), 0.008);
  EXPECT_GT(facts.at("/measuredPercent").number(), 97);
  EXPECT_GT(facts.at("/points").number(), 0.5 * 320 * 256);
}

TEST_F(FringixScan, LeavesAllFiles) {
  ASSERT_EQ(scan("127.0.0.1").exitCode, 0);
  EXPECT_EQ(namesIn(scratch_ / "out"), (std::vector<std::string>{"cloud.pcd", "cloud.ply", "depth-preview.png", "depth.png", "range.npy",
                                                                 "report.html", "scan.json"}));
  const auto points = static_cast<std::size_t>(facts().at("/points").number());
  const std::string ply = file("cloud.ply");
  EXPECT_NE(ply.find("\ncomment serial 4711\n"), std::string::npos);
  EXPECT_NE(ply.find("\nelement vertex " + std::to_string(points) + "\n"), std::string::npos);
  EXPECT_EQ(ply.size(), ply.find("end_header\n") + 11 + 35 * points);
  EXPECT_NE(file("report.html").find("Scan of head 4711"), std::string::npos);
}

TEST_F(FringixScan, FoldersMayHaveLettersOfAnyScript) {
  const std::filesystem::path folder = scratch_.path() / u8"K\u00F6pfe \u5F62";
  const std::u8string name = folder.u8string();
  const std::string quoted = '"' + std::string(name.begin(), name.end()) + '"';
  const Outcome outcome = runProgram(FRINGIX_TOOL, "scan 127.0.0.1 --raw -o " + quoted);
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_TRUE(std::filesystem::exists(folder / "cloud.ply"));
  EXPECT_EQ(scan("--from " + quoted, "again").exitCode, 0);
}

TEST_F(FringixScan, AFolderThatCannotBeMadeIsTold) {
  writeBytes(scratch_ / "out", "a file");
  const Outcome outcome = scan("127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("out"), std::string::npos) << outcome.errors;
  EXPECT_EQ(readBytes(scratch_ / "out"), "a file");
}

TEST_F(FringixScan, TellsPrograms) {
  const Outcome outcome = scan("127.0.0.1 --json");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Json told(outcome.output);
  EXPECT_EQ(told.without("/seconds"), facts().without("/seconds"));
  EXPECT_GT(told.at("/seconds/write").number(), 0) << "which the file cannot tell yet";
}

TEST_F(FringixScan, RepeatedScansDifferAsExpected) {
  ASSERT_EQ(scan("127.0.0.1 --repeat 4").exitCode, 0);
  const double repeatability = facts().at("/errorsInMm/repeatability").number();
  const double expected = facts().at("/errorsInMm/rootMeanSquareSigma").number();
  EXPECT_GT(repeatability, 0.7 * expected);
  EXPECT_LT(repeatability, 1.1 * expected);
  EXPECT_EQ(scan("--repeat 2 --from " + inQuotes(scratch_ / "out"), "again").exitCode, 2);
}

TEST_F(FringixScan, ComputesAgainFromRawPictures) {
  ASSERT_EQ(scan("127.0.0.1 --raw --truth").exitCode, 0);
  server_->stop();
  const Outcome outcome = scan("--truth --from " + inQuotes(scratch_ / "out"), "again");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_TRUE(file("cloud.ply") == file("cloud.ply", "again"));
  EXPECT_TRUE(file("range.npy") == file("range.npy", "again"));
  EXPECT_EQ(facts().at("/errorsInMm"), facts("again").at("/errorsInMm"));
}

TEST_F(FringixScan, MetresAreAThousandMillimetres) {
  ASSERT_EQ(scan("127.0.0.1 --raw").exitCode, 0);
  ASSERT_EQ(scan("--unit m --from " + inQuotes(scratch_ / "out"), "metres").exitCode, 0);
  const std::string ply = file("cloud.ply");
  const std::string metres = file("cloud.ply", "metres");
  EXPECT_NE(metres.find("\ncomment unit m\n"), std::string::npos);
  const auto firstDepth = [](const std::string& file) {
    float depth = 0;
    std::memcpy(&depth, file.data() + file.find("end_header\n") + 11 + 8, 4);
    return depth;
  };
  EXPECT_GT(firstDepth(ply), 100);
  EXPECT_NEAR(firstDepth(ply) / firstDepth(metres), 1000, 0.01);
}

TEST_F(FringixScan, TheOtherCameraSeesTheSameScene) {
  ASSERT_EQ(scan("127.0.0.1 --truth --channel 1").exitCode, 0);
  EXPECT_LT(facts().at("/errorsInMm/true/rootMeanSquare").number(), 0.06);
}

TEST_F(FringixScan, FreesItsSequence) {
  for (int i = 0; i < 2; ++i) ASSERT_EQ(scan("127.0.0.1").exitCode, 0);
  EXPECT_NE(runProgram(FRINGIX_TOOL, "pattern free 127.0.0.1 1").exitCode, 0);
  EXPECT_NE(runProgram(FRINGIX_TOOL, "pattern free 127.0.0.1 2").exitCode, 0);
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "3\n") << "the scans took the numbers before";
}

TEST_F(FringixScan, FreesItsSequenceWhenTheMeasurementFails) {
  server_->model().setMeasurementFault(-2);
  EXPECT_EQ(scan("127.0.0.1").exitCode, 1);
  EXPECT_NE(runProgram(FRINGIX_TOOL, "pattern free 127.0.0.1 1").exitCode, 0);
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "2\n");
}

TEST_F(FringixScan, AMissingPictureIsNamed) {
  ASSERT_EQ(scan("127.0.0.1 --raw").exitCode, 0);
  std::filesystem::remove(scratch_ / "out" / "raw-07.png");
  const Outcome outcome = scan("--from " + inQuotes(scratch_ / "out"), "again");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("raw-07.png\" is missing"), std::string::npos) << outcome.errors;
}

class FringixScanCalibration : public FringixScan {};

// Before the head is given any work: the next sequence is its first.
TEST_F(FringixScanCalibration, ACalibrationOfAnotherCameraIsRefused) {
  keepCalibrationOf({64, 48}, {640, 400}, 4711);
  const Outcome outcome = scan("127.0.0.1 --calibration " + inQuotes(scratch_ / "other.json"));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("the calibration is of a camera with 64 x 48 pixels, but this one has 320 x 256"), std::string::npos)
      << outcome.errors;
  EXPECT_NE(outcome.errors.find("--calibration FILE"), std::string::npos) << outcome.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "1\n");
}

TEST_F(FringixScanCalibration, ACalibrationOfAnotherProjectorIsRefused) {
  keepCalibrationOf({320, 256}, {1024, 768}, 4711);
  const Outcome outcome = scan("127.0.0.1 --calibration " + inQuotes(scratch_ / "other.json"));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("of a projector with 1024 x 768 pixels, but this one has 640 x 400"), std::string::npos) << outcome.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "1\n");
}

TEST_F(FringixScanCalibration, ACameraThatTheHeadDoesNotHaveIsRefused) {
  const Outcome outcome = scan("127.0.0.1 --channel 3");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("there is no channel 3: the head at 127.0.0.1 has 2 channels, 0 to 1"), std::string::npos)
      << outcome.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "pattern alloc 127.0.0.1 1").output, "1\n");
}

TEST_F(FringixScanCalibration, ACalibrationWithFewerCamerasServesTheOnesItKnows) {
  writeBytes(scratch_ / "one.json", writtenCalibrationOf({320, 256}, {640, 400}, 4711, 1));
  const std::string option = " --calibration " + inQuotes(scratch_ / "one.json");
  const Outcome outcome = scan("127.0.0.1 --channel 1" + option);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("the calibration has no camera 1: it knows 1"), std::string::npos) << outcome.errors;
  const Outcome known = scan("127.0.0.1" + option);
  EXPECT_EQ(known.exitCode, 0) << known.errors;
  EXPECT_EQ(known.errors.find("camera"), std::string::npos) << known.errors;
}

TEST_F(FringixScanCalibration, ACalibrationOfAnotherHeadIsToldAndUsed) {
  keepCalibrationOf({320, 256}, {640, 400}, 5);
  const std::string caution = "the calibration is that of head 5, and this is head 4711";
  const Outcome outcome = scan("127.0.0.1 --calibration " + inQuotes(scratch_ / "other.json"));
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "fringix: caution: " + caution + "\n");
  EXPECT_NE(outcome.output.find(caution), std::string::npos) << outcome.output;
  EXPECT_EQ(facts().at("/cautions/0").text(), caution);
  EXPECT_EQ(scan("127.0.0.1").errors, "") << "with its own there is nothing to tell";
  EXPECT_EQ(facts().at("/cautions").size(), 0U);
}

TEST_F(FringixScan, AHeadWithoutLightGivesNoPoints) {
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "projector 127.0.0.1 3 0").exitCode, 0);
  const Outcome outcome = scan("127.0.0.1 --raw");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("no scan comes of these pictures"), std::string::npos) << outcome.errors;
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "out" / "cloud.ply"));
  EXPECT_TRUE(std::filesystem::exists(scratch_ / "out" / "raw-00.png")) << "so that one can look at them";
}

TEST_F(FringixScanCalibration, AHeadWithoutACalibrationIsTold) {
  server_->model().data().provide("calibration.json", [] { return head::Block(); });
  const Outcome outcome = scan("127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors, "fringix: the head at 127.0.0.1 has no calibration.json\n  Give its calibration with --calibration FILE.\n");
}

TEST(FringixScanRoom, AHeadWithoutRoomForThePatternsIsTold) {
  head::HeadSettings settings = scannedHead();
  settings.sequenceMemory = 640 * 400 * 3 * 10;
  head::HeadServer server(settings);
  server.start();
  const ScratchFolder scratch;
  const Outcome outcome = runProgram(FRINGIX_TOOL, "scan 127.0.0.1 -o " + inQuotes(scratch / "out"));
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("does not allocate such a sequence"), std::string::npos) << outcome.errors;
}

TEST_F(FringixScan, OnePlaceForPicturesIsNeeded) {
  EXPECT_EQ(scan("").exitCode, 2);
  EXPECT_EQ(scan("127.0.0.1 --from " + inQuotes(scratch_ / "out")).exitCode, 2);
  EXPECT_EQ(scan("127.0.0.1 --unit inch").exitCode, 2);
}

}  // namespace
}  // namespace fringix::test
