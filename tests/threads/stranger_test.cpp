// Datagrams from strangers, as many as the system can send.
#include <gtest/gtest.h>

#include <atomic>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"
#include "platform/datagram.h"
#include "support/eventually.h"
#include "support/process_state.h"
#include "support/sanitizers.h"

namespace fringix::test {

namespace {

constexpr std::uint32_t thisHost = 0x7F000001;
constexpr std::uint16_t triggerPort = 44331;
constexpr int flood = 100000;
constexpr std::size_t longest = 2000;
constexpr std::size_t mostGrowth = std::size_t{2} << 20;  // 20 bytes kept of each datagram would be as much

void count(std::int32_t, void* context, std::int64_t) { ++*static_cast<std::atomic<int>*>(context); }

bool triggerArrives(std::atomic<int>& events) {
  const int before = events;
  return eventually([&] {
    platform::sendDatagram(thisHost, {thisHost, triggerPort}, "02UDP_GPIO", 10);
    return eventually([&] { return events > before; }, std::chrono::milliseconds(100));
  });
}

TEST(StrangerTest, AFloodOfDatagramsTriggersNothingAndTheListenerLives) {
  const platform::SocketLibrary library;
  OpenSession session({expect(text("21MSG_SLGetSerial")), reply(integer(5))});
  std::atomic<int> events{0};
  SLRegisterEventhandler(session.handle(), count, &events);
  ASSERT_TRUE(triggerArrives(events));
  platform::sleepFor(std::chrono::milliseconds(200));
  const int before = events;
  const Bytes bytes = noise(longest);
  platform::Socket stranger = platform::Socket::openDatagram();
  const std::size_t memory = residentBytes();
  for (int i = 0; i < flood; ++i) stranger.sendTo(bytes.data(), static_cast<std::size_t>(i) % (longest + 1), {thisHost, triggerPort});
  EXPECT_EQ(events, before);
  EXPECT_TRUE(triggerArrives(events));
  if (!builtWithSanitizers) {
    EXPECT_LT(residentBytes(), memory + mostGrowth);
  }
}

}  // namespace

}  // namespace fringix::test
