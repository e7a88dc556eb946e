// Many sessions in one process, each to a head of its own; the heads are another process, so that this one holds sessions only.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <fringix/fringix.hpp>
#include <list>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/eventually.h"
#include "support/process_state.h"

namespace fringix::test {
namespace {

constexpr int firstSerial = 1001;

std::string addressOf(int head) { return "127.0.1." + std::to_string(1 + head); }

// Simulated heads at 127.0.1.1 and the following addresses.
class Heads {
 public:
  explicit Heads(int count, const std::vector<std::string>& more = {}) : process_(FRINGIX_HEAD, arguments(count, more)) {
    EXPECT_NE(process_.waitForLine("ready:"), "");
  }

  static std::vector<std::string> arguments(int count, const std::vector<std::string>& more) {
    std::vector<std::string> all{"--heads", std::to_string(count), "--address", addressOf(0),   "--camera",
                                 "64x48",   "--projector",         "32x20",     "--image-time", "0"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  void trigger(int head) { process_.write("trigger " + std::to_string(1 + head) + "\n"); }

 private:
  ChildProcess process_;
};

// A session that counts what it hears.
struct CountingSession {
  explicit CountingSession(int head) : serial(firstSerial + head), device(addressOf(head)) {}

  const std::int64_t serial;
  std::atomic<int> measurements = 0;
  std::atomic<int> triggers = 0;
  std::atomic<int> ofOthers = 0;
  Device device;
  Subscription subscription{device, [this](std::int32_t event, std::int64_t from) {
                              ++(from != serial ? ofOthers : event == SLEVENT_TRIGGER ? triggers : measurements);
                            }};
};

// A trigger may be lost while a listener starts, and on Windows when the next one follows too soon.
bool hearsTrigger(Heads& heads, int head, const CountingSession& session) {
  return eventually([&] {
    heads.trigger(head);
    return eventually([&] { return session.triggers > 0; }, std::chrono::milliseconds(200));
  });
}

void measure(const Device& device) {
  const std::uint32_t sequence = device.allocateSequence(2);
  device.measure(sequence);
  device.freeSequence(sequence);
}

TEST(ManySessionsTest, EachHasItsOwnHeadAndNothingStaysBehind) {
  constexpr int count = 64;
  Heads heads(count);
  { const Device first(addressOf(0)); }  // what the first session of a process leaves for good is not counted
  const std::size_t threads = threadCount();
  const std::size_t descriptors = descriptorCount();
  const std::size_t memory = residentBytes();
  {
    std::list<CountingSession> sessions;
    for (int head = 0; head < count; ++head) sessions.emplace_back(head);
    for (const CountingSession& session : sessions) measure(session.device);
    int head = 0;
    for (const CountingSession& session : sessions) EXPECT_TRUE(hearsTrigger(heads, head++, session)) << session.serial;
    for (const CountingSession& session : sessions) {
      EXPECT_EQ(session.measurements, 1) << session.serial;
      EXPECT_EQ(session.ofOthers, 0) << session.serial;
    }
    EXPECT_EQ(threadCount(), threads + 2 * count);
    std::printf("%d sessions: %.1f KiB of memory and %.2f descriptors each\n", count,
                static_cast<double>(residentBytes() - memory) / 1024 / count, static_cast<double>(descriptorCount() - descriptors) / count);
  }
  EXPECT_TRUE(eventually([&] { return threadCount() == threads; })) << threadCount() << " threads, " << threads << " before";
  EXPECT_EQ(descriptorCount(), descriptors);
}

// Under a sanitizer this is where races show.
TEST(ManySessionsTest, ThreadsShareThemWhileTriggersArriveAndHandlersComeAndGo) {
  constexpr int count = 4;
  Heads heads(count, {"--trigger-every", "1ms"});
  std::list<CountingSession> sessions;
  for (int head = 0; head < count; ++head) sessions.emplace_back(head);
  std::atomic<bool> over = false;
  std::atomic<int> heard = 0;
  std::vector<std::thread> workers;
  for (const CountingSession& session : sessions) {
    for (int i = 0; i < 2; ++i) {
      workers.emplace_back([&] {
        while (!over) {
          const Subscription passing(session.device, [&](std::int32_t, std::int64_t) { ++heard; });
          session.device.liveImage();
          EXPECT_EQ(session.device.key().serial, session.serial);
          measure(session.device);
        }
      });
    }
  }
  EXPECT_TRUE(eventually([&] {
    for (const CountingSession& session : sessions) {
      if (session.triggers < 100 || session.measurements < 10) return false;
    }
    return heard > 0;
  }));
  over = true;
  for (std::thread& worker : workers) worker.join();
  for (const CountingSession& session : sessions) EXPECT_EQ(session.ofOthers, 0);
}

}  // namespace
}  // namespace fringix::test
