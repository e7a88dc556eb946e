// Searching for heads with the built program, and commands that name a head by its serial number.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>
#include <string>
#include <vector>

#include "head/serving/head_server.h"
#include "program.h"
#include "small_head.h"
#include "support/json.h"

namespace fringix::test {
namespace {

Outcome fringixTool(const std::string& arguments) { return runProgram(FRINGIX_TOOL, arguments); }

head::HeadSettings headWith(std::int32_t serial, std::int32_t modelCode) {
  head::HeadSettings settings = smallHead();
  settings.serial = serial;
  settings.modelCode = modelCode;
  return settings;
}

TEST(FringixSearch, ListIsATable) {
  head::HeadServer head(headWith(77, 2));
  head.start();
  const Outcome outcome = fringixTool("list");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const std::string beforeUptime =
      "serial number  model           address          protocol  channels  camera px      projector px   uptime s\n"
      "77             QOR_T3D_C       127.0.0.1        3300      2         64 x 48        32 x 20        ";
  EXPECT_EQ(outcome.output.substr(0, beforeUptime.size()), beforeUptime);
}

TEST(FringixSearch, ListAsJson) {
  head::HeadServer head(headWith(77, 0));
  head.start();
  const Json heads(fringixTool("list --json").output);
  EXPECT_GE(heads.at("/0/uptime").number(), 0);
  EXPECT_EQ(heads.at("/0/uptime"), heads.at("/0/info/6"));
  EXPECT_EQ(heads.without("/0/info/6").without("/0/uptime"),
            Json(R"([{"serial": 77, "model": "HXA_T3D", "address": "127.0.0.1", "protocolVersion": 3300, "channels": 2,
                "camera": {"width": 64, "height": 48}, "projector": {"width": 32, "height": 20}, "info": [3300, 2, 64, 48, 32, 20]}])"));
}

TEST(FringixSearch, WhenNobodyAnswersTheNetworksAreNamed) {
  const Outcome outcome = fringixTool("list");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_TRUE(outcome.errors.starts_with("fringix: no head answers the search\n  Asked: ")) << outcome.errors;
  EXPECT_NE(outcome.errors.find("127.0.0.0/8"), std::string::npos) << outcome.errors;
  EXPECT_EQ(Json(fringixTool("list --json").output), Json("[]"));
}

TEST(FringixSearch, ASerialNumberStandsInPlaceOfTheAddress) {
  head::HeadServer head(headWith(77, 1));
  head.start();
  for (const char* command : {"get --serial 77 gain", "get --serial=77 gain", "get gain --serial 77"}) {
    const Outcome outcome = fringixTool(command);
    EXPECT_EQ(outcome.exitCode, 0) << command << ": " << outcome.errors;
    EXPECT_EQ(outcome.output, "10\n") << command;
  }
  EXPECT_EQ(fringixTool("pattern alloc --serial 77 2").exitCode, 0);
  EXPECT_EQ(Json(fringixTool("info --json --serial 77").output).at("/address").text(), "127.0.0.1");
}

TEST(FringixSearch, FailuresNameTheHeadThatWasFound) {
  head::HeadServer head(headWith(77, 1));
  head.start();
  const Outcome outcome = fringixTool("set --serial 77 gain 900");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.errors.find("\"fringix get 127.0.0.1 gain\""), std::string::npos) << outcome.errors;
}

TEST(FringixSearch, AnUnknownSerialNumberIsAFailure) {
  const Outcome outcome = fringixTool("info --serial 78");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.errors,
            "fringix: no head with serial number 78 answers\n"
            "  \"fringix list\" shows the heads that answer, up to 256. One in another network is reached by its address.\n");
}

TEST(FringixSearch, AddressAndSerialNumberExcludeEachOther) {
  EXPECT_EQ(fringixTool("info 127.0.0.1 --serial 77").exitCode, 2);
  EXPECT_EQ(fringixTool("info --serial").exitCode, 2);
  EXPECT_EQ(fringixTool("watch --serial").exitCode, 2);
  EXPECT_EQ(fringixTool("info --serial seven").exitCode, 2);
  EXPECT_EQ(fringixTool("info").exitCode, 2);
}

TEST(WrapperSearch, GivesWhatTheHeadsSay) {
  head::HeadServer head(headWith(77, 1));
  head.start();
  const std::vector<FoundDevice> found = findDevices();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].serial, 77);
  EXPECT_EQ(found[0].model, "QOR_T3D");
  EXPECT_EQ(found[0].address, "127.0.0.1");
  EXPECT_EQ(found[0].info[1], 2);
  EXPECT_EQ(Device::openBySerial(77).key().address, "127.0.0.1");
}

TEST(WrapperSearch, NobodyIsAnEmptyListAndAFailedOpening) {
  EXPECT_TRUE(findDevices().empty());
  try {
    Device::openBySerial(77);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), SLCONNECTION_ERROR);
    EXPECT_STREQ(error.operation(), "SLDevAllocBySerial");
  }
}

}  // namespace
}  // namespace fringix::test
