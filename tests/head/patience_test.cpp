// How many clients a head takes, and how long it waits for them.
#include <atomic>
#include <chrono>
#include <thread>

#include "head_notes.h"
#include "running_head.h"
#include "support/eventually.h"

namespace fringix::head {
namespace {

using std::chrono::milliseconds;
using test::eventually;

class PatienceTest : public testing::Test {
 protected:
  static HeadSettings impatientHead() {
    HeadSettings settings = smallHead();
    settings.idleLimit = milliseconds(1000);
    settings.greetingLimit = milliseconds(500);
    settings.mostClients = 3;
    return settings;
  }

  // Whether a new client is greeted rather than refused.
  static bool isTaken(std::unique_ptr<RawClient>& client) {
    client = std::make_unique<RawClient>();
    try {
      client->greet();
      client->sendText("21MSG_SLGetSerial");
      return client->receiveInt() == smallSerial;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  Notes notes;
  HeadServer server{impatientHead(), notes.observer()};
};

TEST_F(PatienceTest, AnIdleClientIsClosed) {
  server.start();
  RawClient client;
  client.greet();
  EXPECT_TRUE(client.closedByHead());
  EXPECT_TRUE(notes.waitFor(Happening::trouble, "has sent nothing for 1 s"));
}

TEST_F(PatienceTest, AClientThatStopsInTheMiddleOfACommandIsClosed) {
  server.start();
  RawClient client;
  client.greet();
  client.sendText("51MSG_SLSetLEDPower");
  client.sendRaw("\x01");
  EXPECT_TRUE(client.closedByHead());
}

// Never silent for as long as it may be, and still it does not keep its place.
TEST_F(PatienceTest, AClientThatSendsByteByByteIsClosed) {
  server.start();
  RawClient client;
  client.greet();
  client.sendText("12MSG_SLSeqPut");
  client.sendInts({1, 0, 32, 20, 96});
  std::atomic<bool> closed = false;
  std::thread dripping([&] {
    try {
      for (int i = 0; i < 100 && !closed; ++i) {
        client.sendRaw("x");
        std::this_thread::sleep_for(milliseconds(200));
      }
    } catch (const std::runtime_error&) {  // the head has closed
    }
  });
  EXPECT_TRUE(notes.waitFor(Happening::trouble, "has been waited for too long, within one command"));
  closed = true;
  dripping.join();
}

TEST_F(PatienceTest, KeepAlivesKeepAClient) {
  server.start();
  RawClient client;
  client.greet();
  for (int i = 0; i < 8; ++i) {
    std::this_thread::sleep_for(milliseconds(200));
    client.sendText("100MSG_SLNOOP");
  }
  client.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), smallSerial);
}

TEST_F(PatienceTest, AClientThatNeverGreetsIsClosedSooner) {
  server.start();
  const auto begin = std::chrono::steady_clock::now();
  RawClient client;
  client.receiveInt();
  EXPECT_TRUE(client.closedByHead());
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(490));
  EXPECT_TRUE(notes.waitFor(Happening::trouble, "has sent nothing for 500 ms"));
}

TEST_F(PatienceTest, AClientThatReadsNothingIsClosed) {
  HeadSettings settings = impatientHead();
  settings.address = "127.0.0.3";
  settings.camera = {640, 512};
  HeadServer other(settings, notes.observer());
  other.start();
  RawClient client("127.0.0.3");
  client.greet();
  for (int i = 0; i < 40; ++i) client.sendText("41MSG_SLGetLiveImage");
  EXPECT_TRUE(notes.waitFor(Happening::trouble, "has read nothing for 1 s"));
}

TEST_F(PatienceTest, TheHeadsOwnWorkIsNoIdleness) {
  HeadSettings settings = impatientHead();
  settings.address = "127.0.0.3";
  settings.imageTime = milliseconds(1500);
  HeadServer other(settings);
  other.start();
  std::uint32_t id = 0;
  other.model().allocateSequence(1, id);
  RawClient client("127.0.0.3");
  client.greet();
  client.sendText("60MSG_SLStartMeasurement");
  client.sendInts({static_cast<std::int32_t>(id)});
  EXPECT_EQ(client.receiveInt(), 0);
}

TEST(HeadSettingsTest, ClientsThatKeepAliveAreNeverIdle) {
  constexpr std::chrono::seconds longestSilence{30};  // of a client that looks every 15 s whether it was silent for 15 s
  EXPECT_GT(HeadSettings().idleLimit, 2 * longestSilence);
}

TEST_F(PatienceTest, ALimitForClients) {
  server.start();
  std::vector<std::unique_ptr<RawClient>> clients(3);
  for (auto& client : clients) EXPECT_TRUE(isTaken(client));
  RawClient surplus;
  EXPECT_TRUE(surplus.closedByHead()) << "without a greeting";
  EXPECT_TRUE(notes.waitFor(Happening::refused, "3 clients are connected already"));
  clients.clear();
  std::unique_ptr<RawClient> next;
  EXPECT_TRUE(eventually([&] { return isTaken(next); })) << "there is room again when others have gone";
}

TEST_F(PatienceTest, AFloodOfClientsIsNoFloodOfMessages) {
  HeadSettings settings = impatientHead();
  settings.greetingLimit = std::chrono::minutes(1);  // the first three keep their places
  HeadServer patient(settings, notes.observer());
  patient.start();
  std::vector<RawClient> clients(100);
  EXPECT_TRUE(notes.waitFor(Happening::refused, "connections refused)"));
  EXPECT_LE(notes.count(Happening::refused), 10U);
  EXPECT_LE(notes.count(Happening::connected), 3U);
}

}  // namespace
}  // namespace fringix::head
