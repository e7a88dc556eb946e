// fringix explain: what a status means.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "console/statuses.h"
#include "program.h"

namespace fringix::test {
namespace {

Outcome explain(const std::string& arguments) { return runProgram(FRINGIX_TOOL, "explain " + arguments); }

TEST(FringixExplain, EveryStatusHasItsText) {
  for (const std::int32_t code : {SLALL_OKAY, SLUNKNOWN_DEVICE_ID, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT,
                                  SLUNKNOWN_SEQUENCE_ID, SLMEASUREMENT_FAILED, SLVERSION_MISMATCH, SLVERSION_TOO_OLD}) {
    const std::optional<tool::StatusText> found = tool::findStatus(std::to_string(code));
    ASSERT_TRUE(found.has_value()) << code;
    EXPECT_EQ(found->name, statusName(code));
    EXPECT_NE(found->text.find("\nNext step: "), std::string::npos) << found->text;
  }
  EXPECT_EQ(tool::statusTexts().size(), 12U) << "those of scan.h too";
}

TEST(FringixExplain, ByNumberByNameAndByTheNameOfTheOtherLibrary) {
  const std::string connection = explain("-10").output;
  EXPECT_EQ(connection.substr(0, 24), "-10 SLCONNECTION_ERROR\n\n");
  EXPECT_EQ(explain("10").output, connection);
  EXPECT_EQ(explain("SLCONNECTION_ERROR").output, connection);
  EXPECT_EQ(explain("slscan_bad_parameter").output, explain("-3").output);
  EXPECT_EQ(explain("SLSCAN_BAD_PICTURES").output.substr(0, 24), "-51 SLSCAN_BAD_PICTURES\n");
}

TEST(FringixExplain, FromACall) {
  const std::string text = explain("-3 SLGetLiveImageROI").output;
  EXPECT_EQ(
      text.substr(text.rfind("\nFrom ")),
      "\nFrom SLGetLiveImageROI: the region does not lie within the picture, or the factor does not divide its sides (SLBAD_PARAMETER, "
      "-3). \"fringix info ADDRESS\" shows the size of the camera's pictures.\n");
}

TEST(FringixExplain, ANumberOfAHead) {
  EXPECT_EQ(explain("7").output, "7\n\n" + tool::findStatus("7")->text + "\n");
  EXPECT_NE(tool::findStatus("7")->text.find("a number of the head's own"), std::string::npos);
}

TEST(FringixExplain, ListsAll) {
  const Outcome outcome = explain("");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.output.substr(0, 42), "   0  SLALL_OKAY\n  -2  SLUNKNOWN_DEVICE_ID");
}

TEST(FringixExplain, AsJson) {
  const std::string json = explain("-40 SLSaveData --json").output;
  EXPECT_EQ(json.substr(0, 50), "{\n  \"status\": -40,\n  \"name\": \"SLVERSION_TOO_OLD\",\n");
  EXPECT_NE(json.find("\"call\": {\n    \"name\": \"SLSaveData\",\n"), std::string::npos) << json;
}

TEST(FringixExplain, WhatIsUnknownIsUsage) {
  const Outcome status = explain("SLCONECTION_ERROR");
  EXPECT_EQ(status.exitCode, 2);
  EXPECT_NE(status.errors.find("no status is called \"SLCONECTION_ERROR\", did you mean \"SLCONNECTION_ERROR\"?"), std::string::npos)
      << status.errors;
  EXPECT_NE(explain("-3 SLGetLiveImge").errors.find("the library has no \"SLGetLiveImge\", did you mean \"SLGetLiveImage\"?"),
            std::string::npos);
}

TEST(FringixExplain, KnowsAllExports) { EXPECT_EQ(tool::callNames().size(), 70U); }

}  // namespace
}  // namespace fringix::test
