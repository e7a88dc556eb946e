// What a head's imperfections do to a scan: points may be dropped, but those that are there are as exact as they claim.
#include <gtest/gtest.h>

#include <ostream>

#include "scanned_head.h"

namespace fringix::test {
namespace {

struct Imperfection {
  const char* name;
  void (*set)(head::HeadSettings& settings);
  double rootMeanSquare;   // of the true error at most, in mm
  double measuredPercent;  // of the lit pixels at least
  const char* reason;      // of pixels that are dropped for it; null: there are none
};

std::ostream& operator<<(std::ostream& stream, const Imperfection& imperfection) { return stream << imperfection.name; }

using Settings = head::HeadSettings;

// This head has half the columns of a usual one, and so twice the error: with more noise some points are beyond the limit of sigma.
constexpr Imperfection imperfections[] = {
    {"Noise", [](Settings& head) { head.noise = 2; }, 0.06, 85, nullptr},
    {"ShotNoise", [](Settings& head) { head.shotNoise = 0.02; }, 0.05, 97, nullptr},
    {"Ambient", [](Settings& head) { head.ambient = 60; }, 0.035, 90, nullptr},
    {"MildGamma", [](Settings& head) { head.gamma = 1.1; }, 0.035, 97, nullptr},
    {"Gamma", [](Settings& head) { head.gamma = 2.2; }, 0.035, 97, nullptr},
    {"Defocus", [](Settings& head) { head.defocus = 1; }, 0.04, 97, nullptr},
    {"Shine", [](Settings& head) { head.shine = 2; }, 0.035, 90, "saturation"},
    {"Motion", [](Settings& head) { head.motion = 1; }, 0.05, 90, "unsteady"},
    {"AllTogether",
     [](Settings& head) {
       head.shotNoise = 0.01;
       head.ambient = 20;
       head.gamma = 1.2;
       head.defocus = 0.6;
       head.shine = 1;
       head.motion = 0.5;
     },
     0.05, 90, "unsteady"},
};

Settings headWith(const Imperfection& imperfection) {
  Settings settings = scannedHead();
  imperfection.set(settings);
  return settings;
}

class FringixScanImperfections : public FringixScan, public testing::WithParamInterface<Imperfection> {
 protected:
  FringixScanImperfections() : FringixScan(headWith(GetParam())) {}
};

INSTANTIATE_TEST_SUITE_P(Head, FringixScanImperfections, testing::ValuesIn(imperfections),
                         [](const auto& imperfection) { return imperfection.param.name; });

TEST_P(FringixScanImperfections, LeaveNoPointThatIsSilentlyWrong) {
  const Outcome outcome = scan("127.0.0.1 --truth");
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  SCOPED_TRACE(outcome.output);
  const Json facts = this->facts();
  EXPECT_LE(facts.at("/errorsInMm/true/beyond5SigmaPercent").number(), 0.1);
  const double error = facts.at("/errorsInMm/true/rootMeanSquare").number();
  EXPECT_LT(error, GetParam().rootMeanSquare);
  EXPECT_GT(facts.at("/errorsInMm/rootMeanSquareSigma").number(), error) << "which is along the rays, and no less than across a surface";
  EXPECT_GT(facts.at("/measuredPercent").number(), GetParam().measuredPercent);
  if (GetParam().reason != nullptr) {
    EXPECT_GT(facts.at(std::string("/pixels/") + GetParam().reason).number(), 20);
  }
}

}  // namespace
}  // namespace fringix::test
