// Each fault as a client sees it, byte by byte.
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/wire/damaged_reply.h"
#include "head_notes.h"
#include "host.h"
#include "running_head.h"
#include "support/eventually.h"

namespace fringix::head {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::eventually;

class FaultTest : public RunningHead {
 protected:
  void set(const std::string& text) { server.faults().add(parseFault(text, commandNames())); }

  // What still comes until the connection ends.
  std::size_t restOfConnection() {
    std::size_t count = 0;
    try {
      for (;; ++count) client->receiveBytes(1);
    } catch (const std::runtime_error&) {
      return count;
    }
  }

  void reconnect() {
    client = std::make_unique<RawClient>();
    client->greet();
  }

  static bool canConnect() {
    try {
      RawClient();
      return true;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  template <class Action>
  static milliseconds timeOf(Action action) {
    const auto begin = steady_clock::now();
    action();
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
  }
};

TEST_F(FaultTest, ACutEndsTheConnectionBehindItsByte) {
  set("after 1 picture: cut at byte 700");
  EXPECT_EQ(askBytes(frameBytes, "41MSG_SLGetLiveImage").size(), frameBytes);
  expectInStep();
  say("41MSG_SLGetLiveImage");
  EXPECT_EQ(restOfConnection(), 700U);
  reconnect();
  EXPECT_EQ(askBytes(frameBytes, "41MSG_SLGetLiveImage").size(), frameBytes) << "it has struck once";
}

TEST_F(FaultTest, ACutBehindAShortReplyComesAfterAllOfIt) {
  set("at SLGetGain: cut at byte 700");
  say("56MSG_SLGetGain");
  EXPECT_EQ(restOfConnection(), 4U);
}

TEST_F(FaultTest, ACutComesWhereThereIsNoReplyAtAll) {
  set("at SLNOOP: cut");
  say("100MSG_SLNOOP");
  EXPECT_EQ(restOfConnection(), 0U);
}

TEST_F(FaultTest, RepliesBeforeTheFaultAreWhole) {
  set("at SLGetGain: cut");
  client->sendRaw(
      "    17"
      "21MSG_SLGetSerial"
      "    15"
      "56MSG_SLGetGain");
  EXPECT_EQ(restOfConnection(), 4U);
}

TEST_F(FaultTest, AResetEndsTheConnection) {
  set("always, once: reset at byte 2");
  say("56MSG_SLGetGain");
  EXPECT_EQ(restOfConnection(), 2U);
  reconnect();
  expectInStep();
}

TEST_F(FaultTest, AStallWithATimeGoesOn) {
  set("at SLGetSerial: stall at byte 2 for 300 ms");
  say("21MSG_SLGetSerial");
  client->receiveBytes(2);
  EXPECT_GE(timeOf([&] { client->receiveBytes(2); }), milliseconds(250));
  set("at SLGetGain: drip");  // a change ends stalls
  expectInStep();
}

TEST_F(FaultTest, AStallIsOverWhenFaultsAre) {
  set("always: stall");
  say("21MSG_SLGetSerial");
  ASSERT_TRUE(eventually([&] { return server.faults().entries().at(0).struck == 1; }));
  server.faults().clear();
  EXPECT_EQ(client->receiveInt(), smallSerial);
}

TEST(FaultPatience, AStallWithoutATimeEndsWhereIdlenessDoes) {
  HeadSettings settings = smallHead();
  settings.idleLimit = milliseconds(300);
  HeadServer server(settings);
  server.faults().add(parseFault("always: stall at byte 3", commandNames()));
  server.start();
  RawClient client;
  client.greet();
  client.sendText("21MSG_SLGetSerial");
  client.receiveBytes(3);
  EXPECT_TRUE(client.closedByHead());
}

TEST_F(FaultTest, ADripIsAByteAtATime) {
  set("at SLGetSerial: drip every 50 ms");
  EXPECT_GE(timeOf([&] { expectInStep(); }), milliseconds(190));
}

TEST_F(FaultTest, ASlowLinkSlowsBothDirections) {
  set("at SLGetLiveImage: slow link 12800");  // 3072 bytes
  const auto reply = timeOf([&] { askBytes(frameBytes, "41MSG_SLGetLiveImage"); });
  EXPECT_GE(reply, milliseconds(200));
  set("at SLSeqPut: slow link 6400");  // 1920 bytes
  const auto request = timeOf([&] {
    say("12MSG_SLSeqPut", {77, 0, 32, 20, 96});
    client->sendRaw(std::string(1920, 'x'));
    client->receiveInt();
  });
  EXPECT_GE(request, milliseconds(200));
}

// An image comes row by row: 3 MB at 12 MB/s take a quarter of a second in all.
TEST(DamagedReplyTest, ASlowLinkCountsBytesAndNotPieces) {
  Damage damage;
  damage.stepSize = 240000;
  damage.stepTime = milliseconds(20);
  damage.slowsRequest = true;
  steady_clock::time_point last;
  DamagedReply reply(
      damage, [](const std::uint8_t*, std::size_t) {}, [&](steady_clock::time_point end) { last = end; });
  const auto begin = steady_clock::now();
  for (int row = 0; row < 800; ++row) reply.slowRequest(3840);
  EXPECT_GE(last - begin, milliseconds(230));
  EXPECT_LE(last - steady_clock::now(), milliseconds(260));
}

TEST_F(FaultTest, AWrongStatusStandsInPlaceOfTheRightOne) {
  set("always: wrong status -7");
  EXPECT_EQ(ask("55MSG_SLSetGain", {20}), -7);
  EXPECT_EQ(ask("56MSG_SLGetGain"), 20) << "no status, and what was asked for has been done";
  EXPECT_EQ(askInts(3, "40MSG_SLGetMaxImageSize"), (std::vector<std::int32_t>{64, 48, -7}));
}

TEST_F(FaultTest, AWrongLengthIsBytesMoreOrFewer) {
  set("at SLGetGain: wrong length +3");
  EXPECT_EQ(ask("56MSG_SLGetGain"), 10);
  client->receiveBytes(3);
  expectInStep();
  set("at SLGetLEDPower: wrong length -3");
  say("50MSG_SLGetLEDPower");
  client->receiveBytes(1);
  expectInStep();
}

TEST_F(FaultTest, APictureThatIsMissingBeginsWithTheMarker) {
  set("always: no picture");
  const auto picture = askBytes(frameBytes, "41MSG_SLGetLiveImage");
  EXPECT_EQ(picture[0], 0x00);
  EXPECT_EQ(picture[1], 0xFF);
  EXPECT_NE(picture[2], 0);
  EXPECT_EQ(askBytes(1, "42MSG_SLGetLiveImageROI", {5, 5, 1, 1})[0], 0x00);
  expectInStep();
}

TEST_F(FaultTest, SeveralDamageOneReply) {
  set("at SLGetLiveImage: no picture");
  set("at SLGetLiveImage: cut at byte 5");
  const auto begun = askBytes(5, "41MSG_SLGetLiveImage");
  EXPECT_EQ(begun[1], 0xFF);
  EXPECT_EQ(restOfConnection(), 0U);
}

TEST_F(FaultTest, AGreetingCanBeDamaged) {
  set("at greeting, once: cut at byte 2");
  client = std::make_unique<RawClient>();
  EXPECT_EQ(restOfConnection(), 2U);
  reconnect();
  expectInStep();
}

TEST_F(FaultTest, AFrozenHeadSaysNothingToAnybodyUntilItThaws) {
  RawClient other;
  other.greet();
  set("at SLGetGain: frozen for 400 ms");
  const auto begin = steady_clock::now();
  say("56MSG_SLGetGain");
  ASSERT_TRUE(eventually([&] { return server.faults().away(); }));
  other.sendText("21MSG_SLGetSerial");
  RawClient late;
  EXPECT_EQ(server.raiseTrigger(), 0U);
  EXPECT_EQ(other.receiveInt(), smallSerial);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(350));
  EXPECT_EQ(client->receiveInt(), 10);
  EXPECT_EQ(late.greet(), 3300);
}

TEST_F(FaultTest, ARestartResetsAllConnectionsAndComesBack) {
  RawClient other;
  other.greet();
  set("at SLGetGain, once: restart after 1 s");
  ask("55MSG_SLSetGain", {33});
  const auto begin = steady_clock::now();
  say("56MSG_SLGetGain");
  EXPECT_EQ(restOfConnection(), 0U);
  EXPECT_TRUE(other.closedByHead());
  ASSERT_TRUE(eventually([&] { return !canConnect(); })) << "nobody listens";
  ASSERT_TRUE(eventually([&] { return canConnect(); }));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(1000));
  reconnect();
  EXPECT_EQ(ask("56MSG_SLGetGain"), 33) << "what it knows stays";
}

TEST_F(FaultTest, ATimeAloneRestartsAHead) {
  set("after 100 ms: restart after 1 ms");
  EXPECT_TRUE(client->closedByHead());
  ASSERT_TRUE(eventually([&] { return canConnect(); }));
}

TEST_F(FaultTest, AHeadIsStoppedAtOnceWhateverItsFaults) {
  for (const char* fault : {"always: stall", "always: frozen", "always: restart after 60 s", "always: drip every 60 s"}) {
    reconnect();
    set(fault);
    say("56MSG_SLGetGain");
    ASSERT_TRUE(eventually([&] { return server.faults().entries().at(0).struck > 0; })) << fault;
    EXPECT_LT(timeOf([&] { server.stop(); }), std::chrono::seconds(20)) << fault;
    server.faults().clear();
    server.start();
  }
}

TEST_F(FaultTest, TriggersAreLostAndDoubled) {
  Host host;
  set("after 1 trigger: lost trigger");
  set("after 2 triggers: doubled trigger");
  EXPECT_EQ(server.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_EQ(server.raiseTrigger(), 0U);
  EXPECT_FALSE(host.hearsMore());
  EXPECT_EQ(server.raiseTrigger(), 1U);
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_EQ(host.next(), "127.0.0.2: 02UDP_GPIO");
  EXPECT_FALSE(host.hearsMore());
}

TEST(FaultNotes, AFaultThatStrikesIsTold) {
  Notes notes;
  HeadServer server(smallHead(), notes.observer());
  server.faults().add(parseFault("at SLGetGain: wrong length +1", commandNames()));
  server.start();
  RawClient client;
  client.greet();
  client.sendText("56MSG_SLGetGain");
  EXPECT_TRUE(notes.waitFor(Happening::fault, "at SLGetGain: wrong length +1"));
}

}  // namespace
}  // namespace fringix::head
