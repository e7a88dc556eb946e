// The built program accepting a simulated head, by itself and with artefacts that somebody places.
#include <gtest/gtest.h>

#include <cmath>
#include <fringix/scan.hpp>
#include <numbers>

#include "head/serving/head_server.h"
#include "program.h"
#include "scanned_head.h"
#include "support/json.h"

namespace fringix::test {
namespace {

head::HeadSettings acceptedHead() {
  head::HeadSettings settings = scannedHead();
  settings.scene = "stairs";
  return settings;
}

// The calibration of a head, its projector turned by so many degrees about one of its own axes.
std::string turned(const std::string& calibration, double degrees, std::size_t axis) {
  SLScanCalibration read = scan::readCalibration(calibration);
  const double angle = degrees * std::numbers::pi / 180;
  const std::size_t first = 3 * ((axis + 1) % 3);
  const std::size_t second = 3 * ((axis + 2) % 3);
  const auto turn = [&](double& a, double& b) {
    const double before = a;
    a = std::cos(angle) * a - std::sin(angle) * b;
    b = std::sin(angle) * before + std::cos(angle) * b;
  };
  for (std::size_t column = 0; column < 3; ++column)
    turn(read.projector.rotation[first + column], read.projector.rotation[second + column]);
  turn(read.projector.translation[first / 3], read.projector.translation[second / 3]);
  return scan::write(read);
}

class FringixAccept : public testing::Test {
 protected:
  FringixAccept() { server_.start(); }

  static Outcome accept(const std::string& arguments) { return runProgram(FRINGIX_TOOL, "accept " + arguments); }
  Outcome acceptByHand(const std::string& arguments, const std::string& input) const {
    writeBytes(scratch_ / "input", input);
    return runProgram(FRINGIX_TOOL, "accept 127.0.0.1 " + arguments, scratch_ / "input");
  }
  std::string block(const std::string& name) const {
    const std::filesystem::path file = scratch_ / "block";
    EXPECT_EQ(runProgram(FRINGIX_TOOL, "data load 127.0.0.1 " + name + " -o " + inQuotes(file)).exitCode, 0);
    return readBytes(file);
  }

  const ScratchFolder scratch_;
  head::HeadServer server_{acceptedHead()};
};

TEST_F(FringixAccept, ASimulatedHeadIsAcceptedByOneCommand) {
  const Outcome outcome = accept("127.0.0.1 --simulated --json -o " + inQuotes(scratch_ / "out"));
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors << outcome.output;
  const Json told(outcome.output);
  EXPECT_EQ(told.at("/accepted").dump(), "true");
  EXPECT_EQ(told.at("/complete").dump(), "true");
  EXPECT_EQ(told.at("/positions").size(), 10U + 7U + 6U);
  for (const char* figure : {"sizeError", "spacingError", "spacingErrorAtCertifiedDiameter"})
    EXPECT_LT(std::abs(told.at("/figures/" + std::string(figure) + "/worst").number()), 0.03) << figure;
  for (const auto& [figure, sigmas] : {std::pair{"formError", 7}, {"flatness", 7}, {"formError95", 5}, {"flatness95", 5}}) {
    const std::string place = "/figures/" + std::string(figure);
    EXPECT_NEAR(told.at(place + "/limit").number(), sigmas * told.at(place + "/expectedSigma").number(), 1e-9) << figure;
    EXPECT_LT(told.at(place + "/worst").number(), told.at(place + "/limit").number()) << figure;
    EXPECT_GT(told.at(place + "/worst").number(), 0.5 * told.at(place + "/limit").number()) << "there is noise: " << figure;
  }
  EXPECT_EQ(Json(readBytes(scratch_ / "out" / "acceptance.json")), told);
  EXPECT_EQ(namesIn(scratch_ / "out").size(), 1U + 23U + 1U);
  for (const char* name : {"sphere-01.png", "ballbar-07.png", "plane-06.png", "deviations.png"})
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "out" / name)) << name;
  EXPECT_EQ(block("scene.txt"), "stairs") << "the scene that was there before";
}

TEST_F(FringixAccept, TellsPeople) {
  const Outcome outcome = accept("127.0.0.1 --simulated --artefact ballbar --positions 1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors << outcome.output;
  EXPECT_EQ(outcome.output.find("ballbar 1:  PF 0."), 0U) << outcome.output;
  EXPECT_NE(outcome.output.find("\nSD   sphere-spacing error"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("\nA trial:"), std::string::npos) << outcome.output;
}

class FringixAcceptDisturbed : public FringixAccept, public testing::WithParamInterface<std::size_t> {};

// Each axis shows in other figures: about the first planes bend, about the others balls are too near to or too far from each other.
TEST_P(FringixAcceptDisturbed, ATenthOfADegreeIsNotAccepted) {
  const std::filesystem::path file = scratch_ / "turned.json";
  writeBytes(file, turned(block("calibration.json"), 0.1, GetParam()));
  const std::string artefact = GetParam() == 0 ? "plane" : "ballbar";
  const std::string call = "127.0.0.1 --simulated --json --artefact " + artefact + " --calibration " + inQuotes(file);
  const Outcome outcome = accept(call);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(Json(outcome.output).at("/accepted").dump(), "false");
  EXPECT_EQ(Json(outcome.errors).at("/error/kind").text(), "not-accepted") << outcome.errors;
  writeBytes(file, turned(block("calibration.json"), 0, GetParam()));
  EXPECT_EQ(accept(call).exitCode, 0) << "the angle is what is not accepted";
}

INSTANTIATE_TEST_SUITE_P(Axes, FringixAcceptDisturbed, testing::Values(0U, 1U, 2U));

TEST_F(FringixAccept, ALimitThatIsGivenDecides) {
  const std::string call = "127.0.0.1 --simulated --artefact plane --positions 1 ";
  EXPECT_EQ(accept(call + "--limit-flatness 5").exitCode, 0);
  const Outcome outcome = accept(call + "--limit-flatness 0.001");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("beyond the limit: F\n"), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.output.find("BROKEN"), std::string::npos) << outcome.output;
}

TEST_F(FringixAccept, ThePlacedArtefactIsMeasuredAtEachEnter) {
  server_.model().setScene("ballbar:2");
  const Outcome outcome = acceptByHand("--artefact ballbar --diameter 50 --spacing 150 --positions 2 --json", "\n\n");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(Json(outcome.output).at("/positions").size(), 2U);
  EXPECT_NE(outcome.errors.find("Put the ball bar into position 2 of 2, then press Enter."), std::string::npos) << outcome.errors;
  EXPECT_EQ(block("scene.txt"), "ballbar:2") << "nobody asked for another one";
}

TEST_F(FringixAccept, TheCertificateDecides) {
  server_.model().setScene("ballbar:2");
  const Outcome outcome = acceptByHand("--artefact ballbar --diameter 50.1 --spacing 150.2 --positions 1 --json", "\n");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NEAR(Json(outcome.output).at("/figures/sizeError/worst").number(), -0.1, 0.03);
  EXPECT_NEAR(Json(outcome.output).at("/figures/spacingError/worst").number(), -0.2, 0.03);
}

TEST_F(FringixAccept, APositionWithoutTheArtefactIsAskedForAgain) {
  const Outcome outcome = acceptByHand("--artefact sphere --diameter 50 --positions 2", "\n\n");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("ball"), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("not in view"), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("standard input ended before position 1"), std::string::npos) << outcome.errors;
}

TEST_F(FringixAccept, ScansOfEarlierTimesWillDo) {
  std::string folders;
  for (const std::string scene : {"sphere:1", "sphere:4"}) {
    server_.model().setScene(scene);
    const std::string folder = inQuotes(scratch_ / ("scan" + scene.substr(7)));
    ASSERT_EQ(runProgram(FRINGIX_TOOL, "scan 127.0.0.1 --raw -o " + folder).exitCode, 0);
    folders += " " + folder;
  }
  server_.stop();
  const Outcome outcome = accept("--artefact sphere --diameter 50 --json --from" + folders);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(Json(outcome.output).at("/positions").size(), 2U);
  EXPECT_EQ(Json(outcome.output).at("/complete").dump(), "false");
}

TEST_F(FringixAccept, ScansOfSeveralCamerasAreNotJudgedAsOne) {
  const std::string folder = inQuotes(scratch_ / "scan");
  ASSERT_EQ(runProgram(FRINGIX_TOOL, "scan 127.0.0.1 --raw --channel all -o " + folder).exitCode, 0);
  const Outcome outcome = accept("--artefact sphere --diameter 50 --from " + folder);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("are those of 2 cameras"), std::string::npos) << outcome.errors;
}

TEST_F(FringixAccept, ACalibrationOfAnotherHeadIsTold) {
  SLScanCalibration other = scan::readCalibration(block("calibration.json"));
  other.serial = 4712;
  const std::filesystem::path file = scratch_ / "other.json";
  writeBytes(file, scan::write(other));
  const Outcome outcome = accept("127.0.0.1 --simulated --artefact plane --positions 1 --calibration " + inQuotes(file));
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_NE(outcome.errors.find("fringix: caution: "), std::string::npos) << outcome.errors;
}

TEST_F(FringixAccept, TheOtherCameraIsAcceptedToo) {
  const Outcome outcome = accept("127.0.0.1 --simulated --artefact sphere --positions 2 --channel 1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors << outcome.output;
}

TEST_F(FringixAccept, ARealHeadIsNotAskedForScenes) {
  server_.model().data().provide("scene.txt", [] { return head::Block(); });
  const Outcome outcome = accept("127.0.0.1 --simulated");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("the head at 127.0.0.1 is no simulated one"), std::string::npos) << outcome.errors;
  EXPECT_EQ(block("truth.json").find("ball"), std::string::npos);
}

TEST_F(FringixAccept, TheSceneComesBackWhenAScanFails) {
  server_.model().setMeasurementFault(-2);
  EXPECT_EQ(accept("127.0.0.1 --simulated").exitCode, 1);
  EXPECT_EQ(block("scene.txt"), "stairs");
}

TEST_F(FringixAccept, WrongUsageIsTold) {
  for (const char* call : {"", "127.0.0.1", "--simulated", "127.0.0.1 --artefact cube", "127.0.0.1 --artefact sphere",
                           "127.0.0.1 --artefact sphere --diameter 0", "127.0.0.1 --artefact sphere --diameter nan",
                           "127.0.0.1 --artefact ballbar --diameter 50", "127.0.0.1 --artefact ballbar --diameter 50 --spacing 40",
                           "127.0.0.1 --artefact plane --from x", "--simulated --from x", "--from x", "127.0.0.1 --simulated --positions 0",
                           "127.0.0.1 --simulated --limit-size -1"})
    EXPECT_EQ(accept(call).exitCode, 2) << call;
}

}  // namespace
}  // namespace fringix::test
