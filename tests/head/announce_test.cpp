// A head that is searched for: what it answers, from where, and what can be wrong with it.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <set>
#include <string>

#include "head/serving/announcement.h"
#include "head/serving/head_server.h"
#include "manual_clock.h"
#include "ports/search_port.h"
#include "running_head.h"
#include "support/child_process.h"

namespace fringix::head {
namespace {

using std::chrono::milliseconds;
using Answers = std::multiset<std::string>;

HeadSettings headAt(const std::string& address, std::int32_t serial = smallSerial) {
  HeadSettings settings = smallHead();
  settings.address = address;
  settings.serial = serial;
  settings.noise = 0;
  return settings;
}

HeadSettings headWith(AnnounceFault fault) {
  HeadSettings settings = headAt("127.0.0.2");
  settings.announceFault = fault;
  return settings;
}

constexpr milliseconds patience{10000};

// A client that searches the loopback network.
class Searcher {
 public:
  explicit Searcher(std::string_view request = "01UDP_SLANNOUNCE") {
    socket_.setBroadcast(true);
    EXPECT_EQ(socket_.sendTo(request.data(), request.size(), {0x7FFFFFFF, ports::searchPort}), static_cast<std::ptrdiff_t>(request.size()));
  }

  // "SENDER: FIRST FOUR WORDS" of every answer: so many are waited for, and then whether there are more.
  Answers answers(std::size_t expected) {
    Answers all;
    for (std::string text = next(limit(all, expected)); !text.empty(); text = next(limit(all, expected)))
      all.insert(text.substr(0, text.find(" PROTOCOL")));
    return all;
  }

  // The next answer, empty when none comes.
  std::string next(milliseconds within = patience) {
    if (socket_.waitReadable(within) != platform::Readiness::ready) return "";
    std::array<char, 400> bytes;
    platform::Ipv4Endpoint sender;
    const std::ptrdiff_t size = socket_.receiveFrom(bytes.data(), bytes.size(), &sender);
    return platform::formatIpv4(sender.address) + ": " + std::string(bytes.data(), static_cast<std::size_t>(size));
  }

 private:
  static milliseconds limit(const Answers& all, std::size_t expected) { return all.size() < expected ? patience : milliseconds(250); }

  const platform::SocketLibrary library_;
  platform::Socket socket_ = platform::Socket::openDatagram();
};

TEST(AnnouncementTest, TellsWhatTheHeadIs) {
  ManualClock clock;
  HeadSettings settings = smallHead();
  settings.clock = clock.clock();
  settings.modelCode = 2;
  const HeadModel model(settings);
  clock.advance(std::chrono::seconds(90));
  EXPECT_EQ(announcement(model),
            "SERIAL 4711 MODEL 2 PROTOCOL 3300 2 CAMERA_WIDTH 64 CAMERA_HEIGHT 48 PROJECTOR_WIDTH 32 PROJECTOR_HEIGHT 20 UPTIME 90");
}

TEST(AnnouncementTest, IsBrokenWhenAsked) {
  EXPECT_TRUE(announcement(HeadModel(headWith(AnnounceFault::malformed))).starts_with("4711 MODEL 1")) << "without the first label";
  EXPECT_EQ(announcement(HeadModel(headWith(AnnounceFault::oversized))).size(), 299U);
}

TEST(AnnouncerTest, EveryHeadAnswersFromItsOwnAddress) {
  HeadServer first(headAt("127.0.0.2", 10));
  HeadServer second(headAt("127.0.0.3", 20));
  HeadServer onAll(headAt("0.0.0.0", 30));
  first.start();
  second.start();
  EXPECT_EQ(Searcher().answers(2), (Answers{"127.0.0.2: SERIAL 10 MODEL 1", "127.0.0.3: SERIAL 20 MODEL 1"}));
  first.stop();
  second.stop();
  onAll.start();
  EXPECT_EQ(Searcher().answers(1), (Answers{"127.0.0.1: SERIAL 30 MODEL 1"}));
}

TEST(AnnouncerTest, TheHeadsOfAProgramCountUpAndTakeTurnsWithTheModels) {
  test::ChildProcess program(FRINGIX_HEAD, {"--heads", "5", "--camera", "64x48", "--projector", "32x20"});
  ASSERT_NE(program.waitForLine("ready:"), "");
  EXPECT_EQ(Searcher().answers(5),
            (Answers{"127.0.0.2: SERIAL 1001 MODEL 1", "127.0.0.3: SERIAL 1002 MODEL 2", "127.0.0.4: SERIAL 1003 MODEL 0",
                     "127.0.0.5: SERIAL 1004 MODEL 1", "127.0.0.6: SERIAL 1005 MODEL 2"}));
}

TEST(AnnouncerTest, OtherDatagramsGetNoAnswer) {
  HeadServer server(headAt("127.0.0.2"));
  server.start();
  for (const char* request : {"", "01UDP_SLANNOUNC", "01UDP_SLANNOUNCE ", "    1601UDP_SLANNOUNCE", "02UDP_GPIO"}) {
    EXPECT_EQ(Searcher(request).answers(0), Answers{}) << request;
  }
  EXPECT_EQ(Searcher().answers(1).size(), 1U);
}

TEST(AnnouncerTest, AStoppedHeadIsNotFound) {
  HeadServer server(headAt("127.0.0.2"));
  server.start();
  server.stop();
  EXPECT_EQ(Searcher().answers(0), Answers{});
  server.start();
  EXPECT_EQ(Searcher().answers(1).size(), 1U);
}

TEST(AnnouncerTest, AnswersAreLateDoubledOrMissingWhenAsked) {
  HeadServer silent(headWith(AnnounceFault::silent));
  silent.start();
  EXPECT_EQ(Searcher().answers(0), Answers{});
  silent.stop();

  HeadServer doubled(headWith(AnnounceFault::doubled));
  doubled.start();
  EXPECT_EQ(Searcher().answers(2), (Answers{"127.0.0.2: SERIAL 4711 MODEL 1", "127.0.0.2: SERIAL 4711 MODEL 1"}));
  doubled.stop();

  HeadServer late(headWith(AnnounceFault::late));
  late.start();
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_NE(Searcher().next(), "");
  EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::seconds(1));
}

TEST(AnnouncerTest, AHeadOfAnotherNetworkDoesNotAnswer) {
  HeadModel model(headAt("10.200.0.2"));
  const FaultPlan faults;
  Announcer announcer(model, faults, {});
  announcer.start();
  EXPECT_EQ(Searcher().answers(0), Answers{});
}

}  // namespace
}  // namespace fringix::head
