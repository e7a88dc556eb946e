// What `fringix bench` does with a head.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>

#include "benchmark/measuring.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/serving/head_server.h"
#include "heads/model_name.h"
#include "program.h"
#include "small_head.h"
#include "support/eventually.h"
#include "support/json.h"

namespace fringix::test {
namespace {

using tool::BenchTask;
using tool::Findings;

constexpr std::chrono::seconds noTime{0};  // of each call one sample

class FringixBench : public testing::Test {
 protected:
  void start(std::int32_t protocolVersion = 3300) {
    head::HeadSettings settings = smallHead(protocolVersion);
    settings.triggerLine = 5;
    settings.imageTime = std::chrono::milliseconds(0);
    server_.emplace(settings, [this](head::Happening happening, const std::string&, const std::string& text) {
      if (happening == head::Happening::command && text == "10MSG_SLSeqFree") ++freed_;
    });
    server_->start();
  }

  static Findings measured(const BenchTask& task) {
    const Device device("127.0.0.1");
    Findings findings;
    findings.head = {"127.0.0.1", 4711, "", 0, device.cameraSize(), device.projectorSize()};
    tool::measure(device, task, findings, [](const std::string&) {});
    return findings;
  }

  static std::vector<std::string> namesOf(const Findings& findings) {
    std::vector<std::string> names;
    for (const tool::Measured& one : findings.measured) names.push_back(one.name);
    return names;
  }

  std::int32_t lineState() {
    std::int32_t state = -1;
    server_->model().lines().read(5, state);
    return state;
  }

  std::atomic<int> freed_ = 0;
  std::optional<head::HeadServer> server_;
};

using Names = std::vector<std::string>;

TEST_F(FringixBench, TakesOneSampleOfEachWithoutTimeAndChangesNothing) {
  start();
  const Findings findings = measured({noTime});
  EXPECT_EQ(namesOf(findings), (Names{"command", "picture", "region", "reduced-2", "reduced-4", "upload"}));
  for (const tool::Measured& one : findings.measured) EXPECT_EQ(one.timing.samples, 1U) << one.name;
  EXPECT_EQ(findings.measured[1].bytes, 64U * 48);
  EXPECT_EQ(findings.measured[2].bytes, 32U * 24);
  EXPECT_EQ(findings.measured[4].bytes, 16U * 12);
  EXPECT_EQ(findings.measured[5].bytes, 32U * 20 * 3);
  EXPECT_TRUE(findings.complete);
  EXPECT_EQ(findings.changed, "");
  EXPECT_EQ(freed_, 1) << "the sequence of the upload";
  EXPECT_EQ(server_->model().storedPicture({0, 0}), nullptr);
}

TEST_F(FringixBench, ScansWhenAsked) {
  start();
  const Findings findings = measured({noTime, true});
  ASSERT_EQ(namesOf(findings), (Names{"command", "picture", "region", "reduced-2", "reduced-4", "upload", "scan", "scan-measurement"}));
  EXPECT_GE(findings.measured[6].timing.median, findings.measured[7].timing.median);
  EXPECT_NE(findings.changed, "");
  EXPECT_EQ(freed_, 2);
  EXPECT_NE(server_->model().storedPicture({0, 0}), nullptr);
}

TEST_F(FringixBench, TriggersByALineThatIsWiredToTheInput) {
  start();
  server_->model().lines().set(5, 1);
  const Findings findings = measured({noTime, false, 5});
  ASSERT_EQ(namesOf(findings).back(), "trigger");
  EXPECT_EQ(findings.measured.back().lost, 0U);
  EXPECT_EQ(lineState(), 1) << "as before";
}

TEST_F(FringixBench, ALineThatLeadsNowhereIsTold) {
  start();
  const Findings findings = measured({noTime, false, 4});
  ASSERT_EQ(findings.notMeasured.size(), 1U);
  EXPECT_EQ(findings.notMeasured[0].name, "trigger");
  EXPECT_EQ(findings.notMeasured[0].reason, "no trigger came within 1 s: is line 4 wired to the trigger input?");
}

TEST_F(FringixBench, WhatAnOldHeadCannotIsTold) {
  start(2400);
  const Findings findings = measured({noTime});
  EXPECT_EQ(namesOf(findings), (Names{"command", "picture", "region", "upload"}));
  ASSERT_EQ(findings.notMeasured.size(), 2U);
  EXPECT_NE(findings.notMeasured[0].reason.find("SLVERSION_TOO_OLD"), std::string::npos) << findings.notMeasured[0].reason;
  EXPECT_TRUE(findings.complete);
}

TEST_F(FringixBench, SizesThatNoMemoryHoldsAreTold) {
  head::HeadSettings settings = smallHead();
  settings.projector = {70000, 70000};
  server_.emplace(settings);
  server_->start();
  const Findings findings = measured({noTime});
  EXPECT_EQ(namesOf(findings), (Names{"command", "picture", "region", "reduced-2", "reduced-4"}));
  ASSERT_EQ(findings.notMeasured.size(), 1U);
  EXPECT_EQ(findings.notMeasured[0].reason, "an image of 70000 x 70000 pixels is too large");
}

// A search waits for 300 ms, which are over before a busy machine has answered.
TEST_F(FringixBench, TheModelComesFromASearch) {
  start();
  const std::chrono::seconds limit{10};
  EXPECT_TRUE(eventually([&] { return tool::modelName("127.0.0.1", limit) == "QOR_T3D"; }));
  EXPECT_EQ(tool::modelName("127.0.0.9", limit), "");
}

TEST_F(FringixBench, PrintsJsonDrawsAndCompares) {
  start();
  const ScratchFolder scratch;
  const Outcome outcome = runProgram(FRINGIX_TOOL, "bench 127.0.0.1 --seconds 0 --json -o " + inQuotes(scratch / "times.png"));
  ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
  const Json told(outcome.output);
  EXPECT_EQ(told.at("/format").text(), "fringix-bench");
  EXPECT_EQ(told.at("/head/serial").number(), 4711);
  EXPECT_TRUE(told.has("/head/model"));
  EXPECT_EQ(told.at("/head/protocolVersion").number(), 3300);
  EXPECT_EQ(told.at("/date").text().size(), 20U);
  EXPECT_EQ(told.at("/measured/0/samples").number(), 1);
  EXPECT_EQ(told.at("/notMeasured").size(), 2U);
  EXPECT_EQ(readBytes(scratch / "times.png").substr(1, 3), "PNG");
  writeBytes(scratch / "a.json", outcome.bytes);
  const std::string file = inQuotes(scratch / "a.json");
  const Outcome compared = runProgram(FRINGIX_TOOL, "bench --compare " + file + " " + file + " --json");
  EXPECT_EQ(compared.exitCode, 0) << compared.errors;
  EXPECT_EQ(Json(compared.output).at("/measured/0/median/ratio").number(), 1);
}

TEST_F(FringixBench, TellsWhatItHasWhenTheConnectionBreaks) {
  start();
  server_->faults().add(head::parseFault("after 4 pictures: reset", head::commandNames()));
  const Outcome outcome = runProgram(FRINGIX_TOOL, "bench 127.0.0.1 --seconds 0");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.output.find("\nregion 32x24 "), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("\nEnded before everything was measured.\n"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.errors.find("SLCONNECTION_ERROR"), std::string::npos) << outcome.errors;
}

}  // namespace
}  // namespace fringix::test
