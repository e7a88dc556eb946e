// Clients that are answered from a recording.
#include <gtest/gtest.h>

#include <fringix/fringix.hpp>

#include "head/serving/head_server.h"
#include "plain_client.h"
#include "program.h"
#include "recording/writer.h"
#include "replaying_head.h"
#include "small_head.h"
#include "support/child_process.h"
#include "support/pattern.h"
#include "support/wire.h"

namespace fringix::test {
namespace {

using recording::Kind;

// Recordings that are made by hand, and a client that differs from what is in them.
class FringixReplay : public testing::Test {
 protected:
  struct Turn {
    Kind kind;
    Bytes bytes;
    int milliseconds = 1;  // after the one before
  };

  // One connection: the beginning that all have, then these.
  void write(const std::vector<Turn>& turns) {
    file_ = scratch_ / ("a" + std::to_string(++files_) + ".fxr");
    recording::Writer writer(file_.string(), {0, 0x7F000002, 0x7F000003, false});
    const auto endpoint = recording::encode(recording::Endpoint{0x7F000001, 4000});
    writer.write(Kind::opened, 1, 0, endpoint);
    add(writer, {Kind::fromHead, integer(3300)});
    add(writer, {Kind::fromClient, integer(3300) + text("40MSG_SLGetMaxImageSize")});
    add(writer, {Kind::fromHead, integers(8, 4, 0)});
    for (const Turn& turn : turns) add(writer, turn);
    writer.write(Kind::end, 0, time_, {});
  }

  const ScratchFolder scratch_;
  std::filesystem::path file_;

 private:
  void add(recording::Writer& writer, const Turn& turn) {
    time_ += static_cast<std::uint64_t>(turn.milliseconds) * 1'000'000;
    const Bytes endpoint(6, '\0');
    const Bytes payload = turn.kind == Kind::trigger ? endpoint : turn.bytes;
    const bool ofConnection = turn.kind != Kind::trigger;
    writer.write(turn.kind, ofConnection ? 1 : 0, time_, {reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()});
  }

  std::uint64_t time_ = 0;
  int files_ = 0;
};

const Bytes inOrder(1, '\0');
const Bytes reset(1, '\1');

TEST_F(FringixReplay, AnswersAsRecorded) {
  write({{Kind::fromClient, text("82MSG_SLReadIniInt") + text("a") + text("b")},
         {Kind::fromHead, integers(7, -21)},
         {Kind::fromClient, text("41MSG_SLGetLiveImage")},
         {Kind::fromHead, noise(10)},
         {Kind::fromHead, noise(22, 2)},
         {Kind::closedByClient, inOrder}});
  ReplayingHead head(file_);
  for (int times = 0; times < 2; ++times) {  // a second client begins anew
    PlainClient client;
    client.say(text("82MSG_SLReadIniInt") + text("a") + text("b"));
    EXPECT_EQ(client.receive(8), integers(7, -21));
    client.say(text("41MSG_SLGetLiveImage"));
    EXPECT_EQ(client.receive(32), noise(10) + noise(22, 2));
  }
  EXPECT_EQ(head.differences(2), 0U);
}

TEST_F(FringixReplay, TellsOtherArgumentsByNameAndPlaceAndGoesOn) {
  write({{Kind::fromClient, text("16MSG_SLSeqMakeFromLine8") + integers(1, 2, 3) + "abc"},
         {Kind::fromHead, integer(-20)},
         {Kind::fromClient, text("82MSG_SLReadIniInt") + text("a") + text("b")},
         {Kind::fromHead, integers(7, 0)}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("16MSG_SLSeqMakeFromLine8") + integers(1, 5, 3) + "aXc");
  EXPECT_EQ(client.receive(4), integer(-20));
  EXPECT_EQ(head.difference(), "command 3, 16MSG_SLSeqMakeFromLine8, byte 34: image was 2, the client says 5");
  EXPECT_EQ(head.difference(), "command 3, 16MSG_SLSeqMakeFromLine8, byte 43: pixels has 62 there, the client says 58");
  client.say(text("82MSG_SLReadIniInt") + text("a") + text("longer"));
  EXPECT_EQ(client.receive(8), integers(7, 0));
  EXPECT_EQ(head.difference(), "command 4, 82MSG_SLReadIniInt, byte 31: key was \"b\", the client says \"longer\"");
}

TEST_F(FringixReplay, ABlockOfAnotherSizeIsReadAndTold) {
  write({{Kind::fromClient, text("16MSG_SLSeqMakeFromLine8") + integers(1, 2, 3) + "abc"},
         {Kind::fromHead, integer(0)},
         {Kind::fromClient, text("56MSG_SLGetGain")},
         {Kind::fromHead, integer(7)}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("16MSG_SLSeqMakeFromLine8") + integers(1, 2, 5) + "abcde");
  EXPECT_EQ(client.receive(4), integer(0));
  EXPECT_EQ(head.difference(), "command 3, 16MSG_SLSeqMakeFromLine8, byte 38: length was 3, the client says 5");
  EXPECT_EQ(head.difference(), "command 3, 16MSG_SLSeqMakeFromLine8, byte 42: pixels had 3 bytes, the client says 5");
  client.say(text("56MSG_SLGetGain"));
  EXPECT_EQ(client.receive(4), integer(7));
}

TEST_F(FringixReplay, AnotherCommandEndsTheConnection) {
  write({{Kind::fromClient, text("56MSG_SLGetGain")}, {Kind::fromHead, integer(7)}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("41MSG_SLGetLiveImage"));
  EXPECT_EQ(client.receive(1), "");
  EXPECT_EQ(head.difference(),
            "command 3, 56MSG_SLGetGain: the client says \"41MSG_SLGetLiveImage\", to which the recording has no answer here");
}

TEST_F(FringixReplay, APictureOfAnotherSizeEndsTheConnection) {
  write({{Kind::fromClient, text("42MSG_SLGetLiveImageROI") + integers(0, 0, 4, 2)}, {Kind::fromHead, noise(8)}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("42MSG_SLGetLiveImageROI") + integers(0, 0, 4, 3));
  EXPECT_EQ(client.receive(1), "");
  EXPECT_EQ(head.difference(), "command 3, 42MSG_SLGetLiveImageROI, byte 41: height was 2, the client says 3");
  EXPECT_EQ(head.difference(), "command 3, 42MSG_SLGetLiveImageROI: the client asks for a picture of 12 bytes, and the recorded one has 8");
}

TEST_F(FringixReplay, SignsOfLifeAndWhatNeverChangesMayComeAnywhere) {
  write({{Kind::fromClient, text("20MSG_SLGetProtocolVersion")},
         {Kind::fromHead, integer(3300)},
         {Kind::fromClient, text("100MSG_SLNOOP") + text("56MSG_SLGetGain")},
         {Kind::fromHead, integer(7)},
         {Kind::fromClient, text("ByeBye=")},
         {Kind::closedByClient, inOrder}});
  ReplayingHead head(file_);
  {
    PlainClient client;
    client.say(text("100MSG_SLNOOP") + text("56MSG_SLGetGain"));
    EXPECT_EQ(client.receive(4), integer(7));
    client.say(text("20MSG_SLGetProtocolVersion"));
    EXPECT_EQ(client.receive(4), integer(3300));
    client.say(text("ByeBye="));
  }
  EXPECT_EQ(head.differences(1), 0U);
}

TEST_F(FringixReplay, TellsOfAClientThatSaysMoreOrLess) {
  write({{Kind::fromClient, text("56MSG_SLGetGain")}, {Kind::fromHead, integer(7)}, {Kind::closedByClient, inOrder}});
  ReplayingHead head(file_);
  {
    PlainClient client;
    client.say(text("56MSG_SLGetGain"));
    EXPECT_EQ(client.receive(4), integer(7));
    client.say(text("53MSG_SLGetBrightness"));
    EXPECT_EQ(client.receive(1), "");
  }
  EXPECT_EQ(head.difference(), "behind command 3: the recorded client left here, the client says \"53MSG_SLGetBrightness\"");
  { PlainClient client; }
  EXPECT_EQ(head.difference(), "command 3, 56MSG_SLGetGain: the client leaves, and the recorded one did not");
}

// What a customer's head did wrong is what it does here.
TEST_F(FringixReplay, HeadsBreakOffAsTheyDid) {
  write({{Kind::fromClient, text("41MSG_SLGetLiveImage")}, {Kind::fromHead, noise(5)}, {Kind::closedByHead, reset}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("41MSG_SLGetLiveImage"));
  EXPECT_EQ(client.receive(32), noise(5));
}

TEST_F(FringixReplay, WhatNobodyUnderstandsIsPlayedByteByByte) {
  write({{Kind::fromClient, text("999MSG_SLNew") + "abc"}, {Kind::fromHead, "fine"}, {Kind::fromClient, "xy"}, {Kind::fromHead, "ok"}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("999MSG_SLNew") + "aXc");
  EXPECT_EQ(client.receive(4), "fine");
  client.say("xy");
  EXPECT_EQ(client.receive(2), "ok");
  EXPECT_EQ(head.difference(), "command 3, unknown, byte 19: there was 62, the client says 58");
}

TEST_F(FringixReplay, TakesTheRecordedTimeUnlessAtOnce) {
  constexpr int pause = 300;
  write({{Kind::fromClient, text("56MSG_SLGetGain"), 60'000}, {Kind::fromHead, integer(7), pause}});
  const auto timed = [&] {
    PlainClient client;
    const auto begin = std::chrono::steady_clock::now();
    client.say(text("56MSG_SLGetGain"));
    EXPECT_EQ(client.receive(4), integer(7));
    return std::chrono::steady_clock::now() - begin;
  };
  {
    ReplayingHead head(file_, false);
    EXPECT_GE(timed(), std::chrono::milliseconds(pause)) << "and not the minute before, which was the client's";
  }
  ReplayingHead head(file_);
  timed();
}

TEST_F(FringixReplay, RaisesTheRecordedTriggers) {
  platform::SocketLibrary library;
  platform::Socket port = platform::Socket::openDatagram();
  ASSERT_TRUE(port.bind({0x7F000001, 44331}));
  write({{Kind::fromClient, text("56MSG_SLGetGain")}, {Kind::fromHead, integer(7)}, {Kind::trigger, ""}});
  ReplayingHead head(file_);
  PlainClient client;
  client.say(text("56MSG_SLGetGain"));
  ASSERT_EQ(port.waitReadable(std::chrono::seconds(20)), platform::Readiness::ready);
  char text[32];
  platform::Ipv4Endpoint sender;
  EXPECT_EQ(port.receiveFrom(text, sizeof text, &sender), 10);
  EXPECT_EQ(std::string(text, 10), "02UDP_GPIO");
  EXPECT_EQ(sender.address, 0x7F000003U);
}

TEST_F(FringixReplay, WhatIsNoRecordingIsRefused) {
  writeBytes(scratch_ / "text.fxr", "hello");
  const Outcome text = runProgram(FRINGIX_HEAD, "--replay " + inQuotes(scratch_ / "text.fxr"));
  EXPECT_EQ(text.exitCode, 1);
  EXPECT_TRUE(contains(text.errors, "text.fxr\": it is no recording")) << text.errors;
  EXPECT_EQ(runProgram(FRINGIX_HEAD, "--replay a.fxr --heads 2").exitCode, 2);
}

head::HeadSettings scannedHead() {
  head::HeadSettings settings = smallHead();
  settings.camera = {160, 128};
  settings.projector = {320, 200};
  settings.imageTime = std::chrono::milliseconds(0);
  return settings;
}

// The built programs, from the beginning to the end.
TEST(FringixReplayOfAScan, GivesTheSameClouds) {
  const ScratchFolder scratch;
  const std::string file = (scratch / "a.fxr").string();
  const auto scan = [&](const std::string& folder) { return runProgram(FRINGIX_TOOL, "scan 127.0.0.3 -o " + inQuotes(scratch / folder)); };
  {
    head::HeadServer server(scannedHead());
    server.start();
    ChildProcess recorder(FRINGIX_TOOL, {"record", "127.0.0.1", "--listen", "127.0.0.3", "-o", file, "-n", "2", "--compress"});
    EXPECT_EQ(recorder.waitForLine("recording"), "recording 127.0.0.1 for clients at 127.0.0.3, end with Ctrl-C");
    EXPECT_EQ(scan("recorded").exitCode, 0);
    EXPECT_EQ(recorder.wait(), 0);
  }
  ChildProcess head(FRINGIX_HEAD, {"--replay", file, "--at-once", "--address", "127.0.0.3"});
  EXPECT_NE(head.waitForLine("ready: "), "");
  const Outcome outcome = scan("replayed");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  for (const char* name : {"cloud.ply", "cloud.pcd", "range.npy", "depth.png"}) {
    const std::string cloud = readBytes(scratch / "recorded" / name);
    EXPECT_GT(cloud.size(), 1000U) << name;
    EXPECT_EQ(readBytes(scratch / "replayed" / name), cloud) << name;
  }
  const auto devices = findDevices();
  EXPECT_TRUE(devices.size() == 1 && devices[0].serial == 4711 && devices[0].address == "127.0.0.3") << "it is found, too";
  if (head.interrupt()) {
    EXPECT_EQ(head.wait(), 0) << "nothing differed";
  }
}

}  // namespace
}  // namespace fringix::test
