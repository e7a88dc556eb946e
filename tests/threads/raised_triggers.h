// For tests that raise triggers by sending datagrams, and note who is called.
#pragma once

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"
#include "platform/datagram.h"
#include "support/eventually.h"

namespace fringix::test {

using Calls = std::vector<std::string>;

inline constexpr std::uint32_t thisHost = 0x7F000001;
inline constexpr std::uint32_t otherHead = 0x7F000002;
inline constexpr std::uint32_t thirdHead = 0x7F000003;
inline constexpr std::uint32_t noHead = 0x7F000004;
inline constexpr std::uint16_t triggerPort = 44331;
inline constexpr std::chrono::milliseconds aMoment{300};
inline constexpr std::chrono::seconds patience{20};
inline constexpr int serial = 70123;

inline const Bytes trigger = "02UDP_GPIO";

inline void sendFrom(std::uint32_t head, const Bytes& datagram) {
  ASSERT_TRUE(platform::sendDatagram(head, {thisHost, triggerPort}, datagram.data(), datagram.size()));
}

// A head that tells its serial number when it is asked.
inline Script tellsItsSerial(int number = serial) { return {expect(text("21MSG_SLGetSerial")), reply(integer(number))}; }

// Who was called, in order, by any thread.
class Journal {
 public:
  void note(const std::string& call) {
    const std::lock_guard guard(lock_);
    calls_.push_back(call);
  }
  Calls take() {
    const std::lock_guard guard(lock_);
    return std::exchange(calls_, {});
  }
  std::size_t size() {
    const std::lock_guard guard(lock_);
    return calls_.size();
  }

 private:
  std::mutex lock_;
  Calls calls_;
};

inline void noteEvent(std::int32_t event, void* context, std::int64_t parameter) {
  static_cast<Journal*>(context)->note("event " + std::to_string(event) + " of " + std::to_string(parameter));
}

// The callback for triggers has no context that a test could give it.
inline Journal callbacks;
inline void noteCallback(void* context) { callbacks.note(context == nullptr ? "callback" : "callback with something"); }

class TriggerTest : public testing::Test {
 protected:
  void SetUp() override { callbacks.take(); }

  // Raises triggers until one has got through: a listener may still be on its way to the port, or to its turn.
  static bool raisedUntilHeard(Journal& journal, std::uint32_t head) {
    return eventually([&] {
      sendFrom(head, trigger);
      return eventually([&] { return journal.size() > 0; }, aMoment);
    });
  }

  static void awaitListener(Journal& journal, std::uint32_t head = thisHost) {
    ASSERT_TRUE(raisedUntilHeard(journal, head));
    platform::sleepFor(aMoment);
    journal.take();
  }

  static Calls awaited(Journal& journal, std::size_t count) {
    eventually([&] { return journal.size() >= count; });
    return journal.take();
  }

  platform::SocketLibrary library_;
  Journal journal_;
};

inline const Calls oneEvent{"event 1 of 70123"};

}  // namespace fringix::test
