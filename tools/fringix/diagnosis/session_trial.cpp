#include <algorithm>
#include <atomic>
#include <fringix/fringix.hpp>
#include <memory>
#include <thread>

#include "diagnosis/examination.h"

namespace fringix::tool::diagnosis {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto listenerStarts = 2s;  // within that
constexpr auto interval = 20ms;
constexpr int mostTries = 8;  // a head that takes one client may not have noticed yet that the doctor's other connection has ended
constexpr auto pause = 250ms;

Device open(const std::string& address) {
  for (int attempt = 1;; ++attempt) {
    try {
      return Device(address);
    } catch (const Error& error) {
      if (error.code() != SLCONNECTION_ERROR || attempt == mostTries) throw;
      std::this_thread::sleep_for(pause);
    }
  }
}

bool isDecided(const std::optional<std::vector<PortHolder>>& holders) { return !holders || !holders->empty(); }

void listen(const Device& device, Session& session, std::chrono::milliseconds time) {
  const auto triggers = std::make_shared<std::atomic<std::size_t>>(0);
  device.key();  // a session that knows its serial number asks nothing when a trigger comes
  const Subscription subscription(device, [triggers](std::int32_t, std::int64_t) { ++*triggers; });
  const auto begun = Clock::now();
  do {
    std::this_thread::sleep_for(interval);
    if (!session.holders || !isDecided(session.holders)) session.holders = triggerPortHolders();
  } while (Clock::now() < begun + time || (!isDecided(session.holders) && Clock::now() < begun + listenerStarts));
  session.listened = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun);
  session.triggers = *triggers;
}

}  // namespace

Session trySession(const std::string& address, std::chrono::milliseconds time) {
  Session session;
  try {
    const auto begun = Clock::now();
    const Device device = open(address);
    session.openMilliseconds = std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
    listen(device, session, time);
  } catch (const Error& error) {
    session.operation = error.operation();
    session.status = error.code();
  }
  return session;
}

}  // namespace fringix::tool::diagnosis
