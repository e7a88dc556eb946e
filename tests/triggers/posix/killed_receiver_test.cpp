// The receiver's process dies: the kernel tells its followers, and one of them takes over.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/eventually.h"
#include "triggers/listener_process.h"
#include "triggers/trigger_source.h"

namespace fringix::test {
namespace {

using std::chrono::milliseconds;
using Listeners = std::vector<std::unique_ptr<ListenerProcess>>;

constexpr int kills = 50;
constexpr milliseconds interval{5};
constexpr milliseconds takeoverLimit{100};

std::unique_ptr<ListenerProcess> startListening(const TriggerSource& source) {
  auto listener = std::make_unique<ListenerProcess>(source.address());
  EXPECT_TRUE(listener->hears(1, std::chrono::steady_clock::now()));
  return listener;
}

double inMilliseconds(TimePoint::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

// Takes the receiver out of the listeners; there is one, and only one.
std::unique_ptr<ListenerProcess> takeReceiver(Listeners& listeners) {
  const auto receiver = std::partition(listeners.begin(), listeners.end(), [](const auto& listener) { return !listener->isReceiver(); });
  if (listeners.end() - receiver != 1) throw std::runtime_error(std::to_string(listeners.end() - receiver) + " listeners receive");
  std::unique_ptr<ListenerProcess> taken = std::move(listeners.back());
  listeners.pop_back();
  return taken;
}

// How long it takes until one of the listeners has received a datagram itself.
TimePoint::duration takeover(Listeners& listeners) {
  const TimePoint death = std::chrono::steady_clock::now();
  const auto receives = [](const auto& listener) { return listener->isReceiver(); };
  EXPECT_TRUE(eventually([&] { return std::any_of(listeners.begin(), listeners.end(), receives); }));
  return std::chrono::steady_clock::now() - death;
}

TEST(KilledReceiverTest, AnotherProcessReceivesWithinATenthOfASecond) {
  const TriggerSource source(interval);
  Listeners listeners;
  for (int i = 0; i < 3; ++i) listeners.push_back(startListening(source));
  std::vector<TimePoint::duration> takeovers;
  for (int i = 0; i < kills; ++i) {
    takeReceiver(listeners)->kill();
    takeovers.push_back(takeover(listeners));
    for (const auto& listener : listeners)
      ASSERT_TRUE(listener->hears(1, std::chrono::steady_clock::now())) << "one hangs after kill " << i;
    if (i % 10 == 0) {
      EXPECT_TRUE(areCalm(listeners)) << "one spins after kill " << i;
    }
    listeners.push_back(startListening(source));
  }
  std::sort(takeovers.begin(), takeovers.end());
  std::printf("takeovers: median %.1f ms, slowest %.1f ms\n", inMilliseconds(takeovers[kills / 2]), inMilliseconds(takeovers.back()));
  EXPECT_LE(takeovers.back(), takeoverLimit);
  for (const auto& listener : listeners) EXPECT_TRUE(listener->close());
}

}  // namespace
}  // namespace fringix::test
