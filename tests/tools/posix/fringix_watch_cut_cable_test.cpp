// The built tool watching heads whose cables are cut and mended, in real time.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <deque>
#include <map>
#include <string>

#include "support/child_process.h"
#include "support/posix/networks.h"

namespace fringix::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto tellingLimit = 10s;
constexpr auto losingLimit = 60s;      // the library gives an answer up after 30 s of silence
constexpr auto comingBackLimit = 90s;  // a pause of up to 60 s between two tries, and a try

// Built heads at the far ends of cables, each of which raises a trigger again and again.
class FarHeads {
 public:
  void add(const std::string& name, const std::string& network) {
    networks_.connect(name, network + ".1/24", network + ".2/24");
    networks_.onTheHeadsSide([&] {
      ChildProcess& head = heads_.emplace_back(FRINGIX_HEAD, std::vector<std::string>{"--address", network + ".2", "--camera", "64x48",
                                                                                      "--projector", "32x20", "--trigger-every", "200ms"});
      EXPECT_NE(head.waitForLine("ready:"), "");
    });
  }
  const Networks& networks() const { return networks_; }

 private:
  Networks networks_;
  std::deque<ChildProcess> heads_;
};

// Passes over lines up to one that has both parts; gives the time until then since `begin`.
double secondsUntil(ChildProcess& tool, Clock::time_point begin, const std::string& head, const std::string& news,
                    std::chrono::milliseconds limit) {
  std::string line;
  const auto end = Clock::now() + limit;
  do {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    line = left > 0ms ? tool.waitForLine("  " + head + " ", left) : "";
  } while (!line.empty() && line.find(news) == std::string::npos);
  EXPECT_NE(line, "") << head << ": " << news;
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

void cutAndMend() {
  FarHeads far;
  far.add("short", "10.1.0");
  far.add("long", "10.2.0");
  far.add("whole", "10.3.0");
  ChildProcess tool(FRINGIX_TOOL, {"watch", "10.1.0.2", "10.2.0.2", "10.3.0.2", "--reconnect"});
  ASSERT_NE(tool.waitForLine("watching 3 heads"), "");
  for (const char* head : {"10.1.0.2", "10.2.0.2", "10.3.0.2"}) secondsUntil(tool, Clock::now(), head, "trigger", 20s);

  const auto shortCut = Clock::now();
  far.networks().takeDown("short");
  const double told = secondsUntil(tool, shortCut, "10.1.0.2", "does not answer: ", 60s);
  EXPECT_LT(told, std::chrono::duration<double>(tellingLimit).count());
  secondsUntil(tool, Clock::now(), "10.3.0.2", "trigger", 20s);

  const auto mended = Clock::now();
  far.networks().bringUp("short");
  const double answered = secondsUntil(tool, mended, "10.1.0.2", "answers again", losingLimit);
  secondsUntil(tool, Clock::now(), "10.1.0.2", "trigger", 20s);

  const auto longCut = Clock::now();
  far.networks().takeDown("long");
  const double toldAgain = secondsUntil(tool, longCut, "10.2.0.2", "does not answer: ", 60s);
  EXPECT_LT(toldAgain, std::chrono::duration<double>(tellingLimit).count());
  const double lost = secondsUntil(tool, longCut, "10.2.0.2", "lost: ", losingLimit);
  const auto mendedAgain = Clock::now();
  far.networks().bringUp("long");
  const double back = secondsUntil(tool, mendedAgain, "10.2.0.2", "back: after ", comingBackLimit);
  secondsUntil(tool, Clock::now(), "10.2.0.2", "trigger", 20s);
  std::printf(
      "cut cable: told after %.1f s and %.1f s; answers %.1f s after a short cut; lost after %.1f s, back %.1f s after it was mended\n",
      told, toldAgain, answered, lost, back);
}

TEST(FringixWatchCutCableInRealTime, IsToldWithin10SecondsAndComesBack) {
  const Verdict verdict = inProcessWithNetworks(cutAndMend);
  if (verdict == Verdict::notPermitted) GTEST_SKIP() << "network namespaces and interfaces for them (/dev/net/tun) are not permitted here";
  EXPECT_EQ(verdict, Verdict::passed);
}

}  // namespace
}  // namespace fringix::test
