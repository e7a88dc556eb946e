// The built doctor with heads on this machine.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fringix/fringix.hpp>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "diagnosed.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/serving/head_server.h"
#include "platform/socket.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/eventually.h"
#include "support/scripted_head.h"

namespace fringix::test {
namespace {

void expectTroubles(const Outcome& outcome, const std::string& expected) {
  EXPECT_EQ(troubles(outcome, expected), expected) << outcome.output << outcome.errors;
}

class FringixDoctorInRealTime : public testing::Test {
 protected:
  void start(const head::HeadSettings& settings = smallHead()) {
    server_ = std::make_unique<head::HeadServer>(settings);
    server_->start();
  }

  std::unique_ptr<head::HeadServer> server_;
};

TEST_F(FringixDoctorInRealTime, TellsWhatItMeasuredAsJson) {
  start();
  const Outcome outcome = doctor("127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  expectTroubles(outcome, "");
  const Json report(outcome.output);
  const Json head = report.at("/heads/0");
  EXPECT_EQ(head.at("/address").text(), "127.0.0.1");
  EXPECT_EQ(head.at("/reach").text(), "head");
  EXPECT_EQ(head.at("/serial").number(), 4711);
  EXPECT_EQ(head.at("/protocolVersion").number(), 3300);
  EXPECT_EQ(head.at("/steps").size(), 6U);
  EXPECT_EQ(head.at("/roundTrip/count").number(), 100);
  EXPECT_GT(head.at("/roundTrip/medianMilliseconds").number(), 0);
  EXPECT_EQ(head.at("/picture/bytes").number(), 64 * 48);
  EXPECT_EQ(head.at("/session/status").number(), 0);
}

TEST_F(FringixDoctorInRealTime, WithoutAnAddressLooksAtWhoAnswers) {
  start();
  const Outcome outcome = doctor("");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(Json(outcome.output).at("/heads/0/serial").number(), 4711);
  expectTroubles(doctor("--serial 4712"), "red search");
  EXPECT_EQ(Json(doctor("--serial 4711").output).at("/heads/0/address").text(), "127.0.0.1");
}

TEST_F(FringixDoctorInRealTime, IsALineForEachThingThatIsWell) {
  start();
  const Outcome outcome = runProgram(FRINGIX_TOOL, "doctor 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_NE(outcome.output.find("\n\nhead 127.0.0.1\n  green   connection: TCP 44330 opens in "), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("\n\n0 red, "), std::string::npos) << outcome.output;
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(FringixDoctorInRealTime, WhatIsRedIsAFailure) {
  const Outcome outcome = runProgram(FRINGIX_TOOL, "doctor 127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.output.find("\n  RED     connection: 127.0.0.1:44330 refuses the connection"), std::string::npos) << outcome.output;
  EXPECT_NE(outcome.output.find("Programs get -10 SLCONNECTION_ERROR: Nothing answers"), std::string::npos) << outcome.output;
  EXPECT_EQ(outcome.errors,
            "fringix: the doctor has found 1 thing that does not work: connection 127.0.0.1\n"
            "  Do what stands beside it, then call the doctor again.\n");
}

bool opens(std::optional<Device>& device) {
  try {
    device.emplace("127.0.0.1");
    return true;
  } catch (const Error&) {
    return false;
  }
}

struct Wrong {
  const char* name;
  const char* fault;
  const char* expected;
};

std::ostream& operator<<(std::ostream& out, const Wrong& wrong) { return out << wrong.name; }

class FringixDoctorAtFaultInRealTime : public testing::TestWithParam<Wrong> {};

TEST_P(FringixDoctorAtFaultInRealTime, NamesIt) {
  head::HeadServer server(smallHead());
  server.faults().add(head::parseFault(GetParam().fault, head::commandNames()));
  server.start();
  const Outcome outcome = doctor("127.0.0.1 --timeout 2s");
  expectTroubles(outcome, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Faults, FringixDoctorAtFaultInRealTime,
                         testing::Values(Wrong{"HangsAtOnce", "at greeting: stall", "red connection 127.0.0.1"},
                                         Wrong{"HangsSoon", "at SLGetMaxImageSize: stall", "red handshake 127.0.0.1"},
                                         Wrong{"BreaksOff", "at SLGetProtocolVersion: cut", "red handshake 127.0.0.1"},
                                         Wrong{"HasNoPicture", "always: no picture", "yellow picture 127.0.0.1"},
                                         Wrong{"CutsPictures", "at SLGetLiveImage: cut at byte 700", "red picture 127.0.0.1"},
                                         Wrong{"SaysThatItsCameraFailed", "at SLGetMaxImageSize: wrong status -7",
                                               "red library 127.0.0.1"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(FringixDoctorInRealTime, TellsWhatAnOldHeadLacks) {
  start(smallHead(3000));
  const Outcome outcome = doctor("127.0.0.1");
  EXPECT_EQ(outcome.exitCode, 0) << "yellow is no failure";
  expectTroubles(outcome, "yellow version 127.0.0.1");
  EXPECT_NE(outcome.output.find("SLSetMask (3200)"), std::string::npos) << outcome.output;
}

// The doctor itself has one session at a time.
TEST_F(FringixDoctorInRealTime, ABusyHead) {
  head::HeadSettings settings = smallHead();
  settings.mostClients = 1;
  start(settings);
  expectTroubles(doctor("127.0.0.1"), "");
  std::optional<Device> other;
  ASSERT_TRUE(eventually([&] { return opens(other); })) << "the doctor's session stays";
  expectTroubles(doctor("127.0.0.1"), "red connection 127.0.0.1");
}

TEST_F(FringixDoctorInRealTime, AStrangerOnThePort) {
  const ScriptedHead stranger(Script{reply(text("HTTP/1.1 400 Bad Request"))});
  const Outcome outcome = doctor("127.0.0.1");
  expectTroubles(outcome, "red connection 127.0.0.1");
  EXPECT_EQ(Json(outcome.output).at("/worst").text(), "red");
  EXPECT_EQ(Json(outcome.output).at("/heads/0/reach").text(), "no-head");
}

TEST_F(FringixDoctorInRealTime, ATakenTriggerPort) {
  start();
  const platform::SocketLibrary library;
  platform::Socket stranger = platform::Socket::openDatagram();
  ASSERT_TRUE(stranger.bind({0, 44331}));
  const Outcome outcome = doctor("127.0.0.1");
  expectTroubles(outcome, "red trigger port");
  const bool systemTells = outcome.output.find("(process ") != std::string::npos;
  EXPECT_EQ(outcome.output.find("fringix-tool-te") != std::string::npos, systemTells) << outcome.output;
}

TEST_F(FringixDoctorInRealTime, ATriggerPortThatIsShared) {
  start();
  ChildProcess other(FRINGIX_TOOL, {"watch", "127.0.0.1"});
  ASSERT_NE(other.waitForLine("watching"), "");
  expectTroubles(doctor("127.0.0.1"), "");
}

TEST_F(FringixDoctorInRealTime, WaitsForTriggersWhenAsked) {
  start();
  expectTroubles(doctor("127.0.0.1 --wait 100ms"), "yellow triggers 127.0.0.1");
  head::HeadSettings settings = smallHead();
  server_.reset();
  start(settings);
  std::atomic<bool> over = false;
  std::thread trigger([&] {
    while (!over) {
      server_->raiseTrigger();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });
  const Outcome outcome = doctor("127.0.0.1 --wait 1s");
  over = true;
  trigger.join();
  expectTroubles(outcome, "");
  EXPECT_GT(Json(outcome.output).at("/heads/0/session/triggers").number(), 0);
}

TEST_F(FringixDoctorInRealTime, WatchesWhatChanges) {
  start();
  ChildProcess tool(FRINGIX_TOOL, {"doctor", "127.0.0.1", "--watch", "100ms"});
  ASSERT_NE(tool.waitForLine("0 red, "), "");
  server_.reset();
  EXPECT_NE(tool.waitForLine("green -> RED  connection 127.0.0.1: "), "");
  start();
  EXPECT_NE(tool.waitForLine("RED -> green  connection 127.0.0.1"), "");
  tool.kill();
}

TEST_F(FringixDoctorInRealTime, WrongUsage) {
  EXPECT_EQ(doctor("127.0.0.1 127.0.0.2").exitCode, 2);
  EXPECT_EQ(doctor("127.0.0").exitCode, 2);
  EXPECT_EQ(doctor("--wait soon").exitCode, 2);
}

}  // namespace
}  // namespace fringix::test
