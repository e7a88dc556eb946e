// Whether a head answers, asked of all kinds of peers.
#include "heads/probe.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "head/serving/head_server.h"
#include "small_head.h"
#include "support/scripted_head.h"

namespace fringix::tool {
namespace {

using namespace std::chrono_literals;
using test::reply;

constexpr const char* here = "127.0.0.1";
constexpr auto limit = 300ms;

Reach reachOf(test::Script script) {
  test::ScriptedHead head(std::move(script));
  return probe(here, limit).reach;
}

TEST(Probe, FindsAHeadThatTakesItForAClientThatLeft) {
  std::mutex mutex;
  std::vector<head::Happening> happenings;
  head::HeadServer server(test::smallHead(), [&](head::Happening happening, const std::string&, const std::string&) {
    const std::lock_guard lock(mutex);
    happenings.push_back(happening);
  });
  server.start();
  EXPECT_EQ(probe(here, 5s).reach, Reach::head);
  server.stop();
  EXPECT_EQ(happenings, (std::vector{head::Happening::connected, head::Happening::disconnected}));
}

TEST(Probe, TakesAGreetingInPieces) { EXPECT_EQ(reachOf({test::dribble(test::integer(1))}), Reach::head); }

TEST(Probe, NobodyListens) {
  const Finding finding = probe("127.0.0.9", 5s);
  EXPECT_EQ(finding.reach, Reach::refused);
  EXPECT_NE(finding.reason, "");
}

TEST(Probe, NothingIsSaid) { EXPECT_EQ(reachOf({test::stall()}), Reach::silent); }
TEST(Probe, TheConnectionIsEnded) { EXPECT_EQ(reachOf({test::cut()}), Reach::closed); }
TEST(Probe, TheConnectionIsReset) { EXPECT_EQ(reachOf({test::reset()}), Reach::closed); }

// Some of so many resets are there before the connection is first looked at.
TEST(Probe, TheConnectionIsResetAtOnce) {
  const platform::SocketLibrary library;
  platform::Socket listener = platform::Socket::openStream();
  ASSERT_TRUE(listener.setSoleListener() && listener.bind({0x7F000001, 44330}) && listener.listen(1));
  constexpr int times = 300;
  std::thread peer([&] {
    for (int i = 0; i < times; ++i) listener.accept().setResetOnClose();
  });
  for (int i = 0; i < times; ++i) EXPECT_EQ(probe(here, 5s).reach, Reach::closed);
  peer.join();
}

TEST(Probe, SomethingElseIsSaid) { EXPECT_EQ(reachOf({reply("220 mail.example\r\n")}), Reach::noHead); }
TEST(Probe, TooLittleIsSaid) { EXPECT_EQ(reachOf({reply("ok"), test::stall()}), Reach::noHead); }
TEST(Probe, TooLittleIsSaidBeforeTheEnd) { EXPECT_EQ(reachOf({reply("ok"), test::cut()}), Reach::noHead); }

// A full queue of connections that nobody accepts makes the system pass over new ones, as a head that is off does.
TEST(Probe, EndsInTimeWhenNothingComesBack) {
  const platform::SocketLibrary library;
  platform::Socket listener = platform::Socket::openStream();
  ASSERT_TRUE(listener.setSoleListener() && listener.bind({0x7F000001, 44330}) && listener.listen(0));
  std::vector<platform::Socket> waiting;
  Finding finding{Reach::silent, {}};
  auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 20 && finding.reach == Reach::silent; ++i) {
    waiting.push_back(platform::Socket::openStream());
    waiting.back().setNonBlocking(true);
    waiting.back().connect({0x7F000001, 44330});
    begin = std::chrono::steady_clock::now();
    finding = probe(here, limit);
  }
  const auto elapsed = std::chrono::steady_clock::now() - begin;
  EXPECT_EQ(finding.reach, Reach::timedOut);
  EXPECT_GE(elapsed, limit);
  EXPECT_LT(elapsed, limit + 2s);
}

TEST(Probe, NoWayLeadsThere) {
  const Finding finding = probe("192.0.2.1", limit);  // of an example network
  if (finding.reach != Reach::unreachable) GTEST_SKIP() << "this machine has a way to everywhere";
  EXPECT_NE(finding.reason, "");
}

TEST(ProbeWords, DifferAndSayWhatToDo) {
  std::vector<std::string> said;
  for (const Reach reach :
       {Reach::refused, Reach::unreachable, Reach::timedOut, Reach::silent, Reach::closed, Reach::noHead, Reach::failed}) {
    const Explanation explanation = explain({reach, "because"}, "10.1.2.3", 1500ms);
    EXPECT_NE(explanation.what.find("10.1.2.3:44330"), std::string::npos) << explanation.what;
    EXPECT_NE(explanation.next, "");
    for (const std::string& other : said) EXPECT_NE(explanation.what, other);
    said.push_back(explanation.what);
  }
}

TEST(ProbeWords, TellTheSystemsReasonAndTheLimit) {
  EXPECT_EQ(explain({Reach::unreachable, "No route to host"}, "10.1.2.3", 5s).what, "10.1.2.3:44330 cannot be reached: No route to host");
  EXPECT_EQ(explain({Reach::failed, "Too many open files"}, "10.1.2.3", 5s).what,
            "connecting to 10.1.2.3:44330 failed: Too many open files");
  EXPECT_EQ(explain({Reach::timedOut, {}}, "10.1.2.3", 1500ms).what, "nothing answers at 10.1.2.3:44330 within 1.5 s");
}

}  // namespace
}  // namespace fringix::tool
