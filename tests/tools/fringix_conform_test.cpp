// The built program playing the conversations with heads that are as they should be, and with others.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/serving/head_server.h"
#include "probed.h"
#include "program.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/json.h"

namespace fringix::test {
namespace {

Outcome conform(const std::string& options = "") { return runProgram(FRINGIX_TOOL, "conform 127.0.0.1 " + options); }

bool has(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

class FringixConform : public testing::Test {
 protected:
  void start(std::int32_t protocolVersion = 3300) {
    server_.emplace(smallHead(protocolVersion));
    server_->start();
  }

  const ScratchFolder scratch_;
  std::optional<head::HeadServer> server_;
};

TEST_F(FringixConform, LeavesOutWhatChangesTheHead) {
  start();
  const Outcome outcome = conform();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
  EXPECT_TRUE(has(outcome.output, "as expected  84MSG_SLGetGPIOStatus, a line that no head has\n")) << outcome.output;
  EXPECT_TRUE(has(outcome.output, "left out     300MSG_SLClearMask, no mask any more\n             changes the mask\n")) << outcome.output;
  EXPECT_TRUE(has(outcome.output, "\ndiffers        0\nbroken         0\n")) << outcome.output;
  EXPECT_EQ(server_->model().data().load("conversation.bin", server_->model().transfers()).block, nullptr);
}

TEST_F(FringixConform, PlaysEverythingWhenAsked) {
  start();
  const Outcome outcome = conform("--destructive");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
  EXPECT_TRUE(has(outcome.output, "\ndiffers        0\nbroken         0\nleft out       0\n")) << outcome.output;
  EXPECT_NE(server_->model().data().load("conversation.bin", server_->model().transfers()).block, nullptr);
}

TEST_F(FringixConform, LeavesOutWhatTheHeadIsTooOldFor) {
  start(2500);
  const Outcome outcome = conform();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output << outcome.errors;
  const std::string expected =
      "left out     240MSG_SLGETUPTIME, a head that has been running for some minutes\n"
      "             came with protocol version 2800, the head has 2500\n";
  EXPECT_TRUE(has(outcome.output, expected)) << outcome.output;
}

TEST_F(FringixConform, TellsWhatDiffersByByteAndMeaning) {
  start();
  server_->model().setMeasurementFault(-2);
  const std::string junit = (scratch_ / "junit.xml").string();
  const Outcome outcome = conform("--destructive --junit " + inQuotes(junit));
  EXPECT_EQ(outcome.exitCode, 1);
  const std::string difference =
      "60MSG_SLStartMeasurement: outcome, byte 0 of the reply, should be 0, bytes 00 00 00 00 and is -2, bytes FE FF FF FF";
  EXPECT_TRUE(has(outcome.output, "differs      60MSG_SLStartMeasurement, a measurement of one image\n             " + difference + "\n"))
      << outcome.output;
  EXPECT_TRUE(has(outcome.errors, " conversations are not as they should be\n")) << outcome.errors;
  const std::string xml = readText(junit);
  EXPECT_TRUE(has(xml, "<testcase classname=\"60MSG_SLStartMeasurement\" name=\"a measurement of one image\"><failure message=\"" +
                           difference + "\"/></testcase>\n"))
      << xml;
  EXPECT_TRUE(has(xml, " errors=\"0\" skipped=\"0\">\n")) << xml;
}

TEST_F(FringixConform, TellsOfTheFailureBehindTheTableWhereBothGoToOnePlace) {
  start();
  server_->faults().add(head::parseFault("at SLSetGain: wrong status -7", head::commandNames()));
  ChildProcess program(FRINGIX_TOOL, {"conform", "127.0.0.1"});
  EXPECT_NE(program.waitForLine("broken         0"), "");
  EXPECT_NE(program.waitForLine("fringix: 1 of "), "");
}

TEST_F(FringixConform, PrintsJson) {
  start();
  const Outcome outcome = conform("--json");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Json results(outcome.output);
  EXPECT_EQ(results.at("/0/command").text(), "00MSG_SLShowImage24");
  EXPECT_EQ(results.at("/0/verdict").text(), "left out");
  EXPECT_EQ(results.at("/0/reasons/0").text(), "changes what is projected");
  EXPECT_EQ(results.at("/3/verdict").text(), "as expected");
  EXPECT_EQ(results.at("/3/reasons").size(), 0U);
}

// A head that gets through the opening, then answers one command wrongly and the next one not at all.
TEST(FringixConformToStrangeHeads, TellsOfWrongAnswersAndOfBrokenConnections) {
  Script session = opening() + Script{expect(text("21MSG_SLGetSerial")),
                                      reply(integer(7)),
                                      expect(text("20MSG_SLGetProtocolVersion")),
                                      reply(integer(3300)),
                                      expect(text("02MSG_SLShowFromSeq") + integers(-559038737, 0)),
                                      reply(integer(0)),
                                      expect(text("21MSG_SLGetSerial")),
                                      reply(integer(7)),
                                      cut()};
  ScriptedHead head(probed(std::move(session)));
  const Outcome outcome = conform("--timeout 1s");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_TRUE(has(outcome.output,
                  "differs      02MSG_SLShowFromSeq, a sequence that was never allocated\n"
                  "             02MSG_SLShowFromSeq: status, byte 0 of the reply, should be anything but 0 and is 0, bytes 00 00 00 00\n"))
      << outcome.output;
  EXPECT_TRUE(has(outcome.output, "broken       100MSG_SLNOOP, a sign of life\n")) << outcome.output;
  EXPECT_TRUE(has(outcome.errors, "breaks the connection off before the first command")) << outcome.errors;
}

}  // namespace
}  // namespace fringix::test
