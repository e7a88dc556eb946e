// The receiver's process dies and leaves the lock behind: its followers end, kept on purpose; sessions that are opened later listen.
#include <gtest/gtest.h>

#include <deque>
#include <memory>

#include "support/eventually.h"
#include "triggers/listener_process.h"
#include "triggers/trigger_source.h"

namespace fringix::test {
namespace {

constexpr int kills = 50;
constexpr std::chrono::milliseconds interval{5};
constexpr const char* lastWords = "ERROR: WaitForMultipleObjects in GPIO_Thread failed";

class KilledReceiverTest : public testing::Test {
 protected:
  KilledReceiverTest() {
    for (int i = 0; i < 3; ++i) addListener();
  }

  void addListener() {
    listeners_.push_back(std::make_unique<ListenerProcess>(source_.address()));
    expectHearing(*listeners_.back());
  }

  static void expectHearing(ListenerProcess& listener) { EXPECT_TRUE(listener.hears(1, std::chrono::steady_clock::now())); }

  // How often the last words of listeners were traced, by both followers.
  int ends() { return listeners_[0]->traced(lastWords) + listeners_[1]->traced(lastWords); }

  const TriggerSource source_{interval};
  std::deque<std::unique_ptr<ListenerProcess>> listeners_;  // in the order in which their sessions were opened
};

TEST_F(KilledReceiverTest, ItsFollowersEndAndTheNextSessionsListen) {
  for (int i = 0; i < kills; ++i) {
    ASSERT_TRUE(listeners_.front()->isReceiver()) << "kill " << i;
    const std::unique_ptr<ListenerProcess> receiver = std::move(listeners_.front());
    listeners_.pop_front();
    const int before = ends();
    receiver->kill();
    ASSERT_TRUE(eventually([&] { return ends() == before + 2; })) << "kill " << i;
    if (i % 10 == 0) {
      EXPECT_TRUE(areCalm(listeners_)) << "one spins after kill " << i;
    }
    for (const auto& follower : listeners_) {
      ASSERT_TRUE(follower->close() && follower->open()) << "kill " << i;
      expectHearing(*follower);
    }
    addListener();
  }
}

}  // namespace
}  // namespace fringix::test
