// What stands between programs and a simulated head, and what it recorded.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "plain_client.h"
#include "program.h"
#include "recorded_head.h"
#include "recording/reader.h"
#include "support/child_process.h"
#include "support/json.h"
#include "support/pattern.h"
#include "support/wire.h"
#include "triggered_line.h"

namespace fringix::test {
namespace {

using FringixRecord = RecordedHead;

std::vector<std::string> recordWith(const std::string& file, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"record", "127.0.0.1", "--listen", "127.0.0.3", "-o", file});
  return options;
}

TEST_F(FringixRecord, HandsOnAndRecordsWhatIsSaid) {
  ChildProcess recorder(FRINGIX_TOOL, recordWith(path("a.fxr"), {"-n", "1"}));
  EXPECT_NE(recorder.waitForLine("recording 127.0.0.1 for clients at 127.0.0.3, end with Ctrl-C"), "");
  { EXPECT_EQ(Device("127.0.0.3").gain(), 10U); }
  EXPECT_EQ(recorder.wait(), 0);
  const Shown shown = show();
  EXPECT_EQ(shown.failure + shown.errors, "");
  EXPECT_TRUE(has(shown.output, ": the head at 127.0.0.1, for clients at 127.0.0.3\n")) << shown.output;
  EXPECT_TRUE(has(shown.output, "the head's answer to searches: \"SERIAL 4711 MODEL 1 ")) << shown.output;
  EXPECT_TRUE(has(shown.output, "connection 1 from 127.0.0.1:")) << shown.output;
  EXPECT_TRUE(contains(shown.output,
                       "\n +1 +\\d+\\.\\d{6}   1  greeting client=3300 -> greeting=3300  \\d+\\.\\d{3} ms, 4 bytes sent, 4 received\n"))
      << shown.output;
  EXPECT_TRUE(has(shown.output, "56MSG_SLGetGain -> gain=10  ")) << shown.output;
  EXPECT_TRUE(has(shown.output, "connection 1 ended by the client\n")) << shown.output;
}

TEST_F(FringixRecord, TellsCommandsToPrograms) {
  record(true);
  {
    PlainClient client;
    client.say(text("12MSG_SLSeqPut") + integers(99, 0, 32, 20, 96) + noise(1920));
    EXPECT_EQ(client.receive(4).size(), 4U);
    client.say(text("83MSG_SLWriteIniInt") + text("a") + text("b") + text("7"));
    EXPECT_EQ(client.receive(4).size(), 4U);
    client.say(text("ByeBye="));
  }
  finishRecording(1);
  const std::string lines = runProgram(FRINGIX_TOOL, "recording show --json " + inQuotes(scratch_ / "a.fxr")).output;
  const auto lineOf = [&](const std::string& name) {
    const std::size_t at = lines.find("\"name\":\"" + name);
    const std::size_t begin = lines.rfind('\n', at) + 1;
    return Json(lines.substr(begin, lines.find('\n', at) - begin));
  };
  const Json put = lineOf("12MSG_SLSeqPut");
  EXPECT_EQ(put.at("/command").number(), 3);
  EXPECT_EQ(put.at("/arguments/pixels/bytes").number(), 1920);
  EXPECT_EQ(put.at("/arguments/stride").number(), 96);
  EXPECT_EQ(put.at("/status").number(), -20);
  EXPECT_EQ(put.at("/sent").number(), 20 + 20 + 1920);
  EXPECT_EQ(put.at("/received").number(), 4);
  EXPECT_EQ(lineOf("83MSG_SLWriteIniInt").at("/arguments/value").text(), "7");
  EXPECT_TRUE(has(lines, "\"event\":\"connection 1 ended by the client\"")) << lines;
}

TEST_F(FringixRecord, ClientsFindTheHeadThereAndGetItsTriggers) {
  record();
  const auto devices = findDevices();
  const auto isThere = [](const FoundDevice& device) { return device.address == "127.0.0.3" && device.serial == 4711; };
  EXPECT_TRUE(std::any_of(devices.begin(), devices.end(), isThere));
  {
    ChildProcess watcher(FRINGIX_TOOL, {"watch", "127.0.0.3"});
    EXPECT_NE(watcher.waitForLine("watching"), "");
    const std::string line = lineAfterTrigger(watcher, server_);
    EXPECT_TRUE(has(line, "127.0.0.3")) << line;
    EXPECT_TRUE(has(line, "head 4711  trigger")) << line;
  }
  relay_.reset();
  recorder_->finish();
  const std::string shown = show().output;
  EXPECT_TRUE(has(shown, "     trigger ")) << shown;
  EXPECT_TRUE(has(shown, "search from 127.0.0.1:")) << shown;
}

TEST_F(FringixRecord, TakesSeveralConnectionsAtOnce) {
  record();
  {
    PlainClient one;
    PlainClient two;
    PlainClient three;
    for (PlainClient* client : {&three, &one, &two}) client->say(text("21MSG_SLGetSerial"));
    for (PlainClient* client : {&two, &three, &one}) EXPECT_EQ(client->receive(4), integer(4711));
  }
  finishRecording(3);
  const std::string shown = show().output;
  for (const char* connection : {"  1  21MSG", "  2  21MSG", "  3  21MSG"}) EXPECT_TRUE(has(shown, connection)) << shown;
}

// The program is ended without a chance to clean up: at most what it wrote last is missing.
TEST_F(FringixRecord, ARecorderThatIsKilledLeavesWhatItRecorded) {
  constexpr std::size_t picture = 64 * 48;
  constexpr std::size_t opening = 4 + 12;
  ChildProcess recorder(FRINGIX_TOOL, recordWith(path("a.fxr")));
  EXPECT_NE(recorder.waitForLine("recording "), "");
  PlainClient client;
  for (int i = 0; i < 200; ++i) {
    client.say(text("41MSG_SLGetLiveImage"));
    EXPECT_EQ(client.receive(picture).size(), picture);
  }
  const auto recorded = [&] {
    recording::Reader reader(path("a.fxr"));
    std::size_t bytes = 0;
    while (const auto record = reader.next()) bytes += record->kind == recording::Kind::fromHead ? record->payload.size() : 0;
    return bytes;
  };
  EXPECT_TRUE(eventually([&] { return recorded() == opening + 200 * picture; })) << recorded();
  client.say(text("41MSG_SLGetLiveImage"));
  recorder.kill();
  recorder.wait();
  EXPECT_GE(recorded(), opening + 200 * picture);
  const Shown shown = show();
  EXPECT_TRUE(has(shown.output, "\n  202 ")) << shown.output;
  EXPECT_TRUE(has(shown.errors, "fringix: caution: ")) << shown.errors;
}

TEST_F(FringixRecord, AHeadThatGoesEndsTheConnectionAsItDoes) {
  record();
  PlainClient client;
  client.say("999999");
  EXPECT_EQ(client.receive(1), "") << "the head ends it";
  finishRecording(1);
  EXPECT_TRUE(has(show().output, "connection 1 ended by the head")) << show().output;
}

TEST_F(FringixRecord, AHeadThatIsNotThereResetsTheConnection) {
  record();
  server_.stop();
  platform::Socket client = platform::Socket::openStream();
  EXPECT_TRUE(client.connect({platform::parseIpv4("127.0.0.3"), 44330}));
  finishRecording(1);
  EXPECT_TRUE(has(show().output, "connection 1 not made: the head could not be connected to")) << show().output;
}

TEST_F(FringixRecord, DamagedAndCutRecordingsAreTold) {
  record();
  { PlainClient client; }
  finishRecording(1);
  const std::string file = readBytes(scratch_ / "a.fxr");
  writeBytes(scratch_ / "cut.fxr", file.substr(0, file.size() - 30));
  const Shown cut = show("cut.fxr");
  EXPECT_EQ(cut.failure, "");
  EXPECT_TRUE(has(cut.errors, " bytes at the end are a record that was not written whole; they are ignored\n")) << cut.errors;
  std::string damaged = file;
  const std::size_t lastButOne = file.size() - 24 - 25;  // the client's end, and the recording's
  damaged[lastButOne + 4] = '\x55';
  writeBytes(scratch_ / "damaged.fxr", damaged);
  const Shown broken = show("damaged.fxr");
  EXPECT_TRUE(has(broken.output, "greeting")) << "what stands before that is shown";
  EXPECT_TRUE(has(broken.failure, "byte " + std::to_string(lastButOne) + ": no record begins here")) << broken.failure;
  writeBytes(scratch_ / "text.fxr", "hello");
  EXPECT_TRUE(has(show("text.fxr").failure, "text.fxr\": it is no recording")) << show("text.fxr").failure;
}

TEST_F(FringixRecord, WhatCannotWorkIsRefused) {
  const std::string file = inQuotes(scratch_ / "a.fxr");
  writeBytes(scratch_ / "old.fxr", "precious");
  const Outcome older = runProgram(FRINGIX_TOOL, "record 127.0.0.1 --listen 127.0.0.3 -o " + inQuotes(scratch_ / "old.fxr"));
  EXPECT_EQ(older.exitCode, 1);
  EXPECT_TRUE(has(older.errors, "there is such a file already; name another one")) << older.errors;
  EXPECT_EQ(readBytes(scratch_ / "old.fxr"), "precious");
  const Outcome same = runProgram(FRINGIX_TOOL, "record 127.0.0.1 --listen 127.0.0.1 -o " + file);
  EXPECT_TRUE(has(same.errors, "127.0.0.1 is the head's own address")) << same.errors;
  EXPECT_EQ(runProgram(FRINGIX_TOOL, "record 127.0.0.1 --listen 0.0.0.0 -o " + file).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "a.fxr"));
}

}  // namespace
}  // namespace fringix::test
