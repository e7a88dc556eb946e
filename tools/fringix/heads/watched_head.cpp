#include "heads/watched_head.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <utility>

#include "aside/run_aside.h"
#include "console/explain.h"
#include "heads/open_head.h"
#include "heads/probe.h"

namespace fringix::tool {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Together below the 10 seconds within which a head that does not answer is told of.
constexpr auto askInterval = 2s;
constexpr auto patience = 3s;
constexpr std::chrono::milliseconds longestExamination = 3s;

constexpr auto longestAnswer = 40s;  // the library has given up by then, unless its lock is lost
constexpr auto stopInterval = 50ms;
constexpr auto partingPatience = 500ms;
constexpr std::chrono::seconds longestPause = 60s;

std::string describe(const Finding& finding, bool connected) {
  switch (finding.reach) {
    case Reach::head:
      return connected ? "it takes new connections, but is busy or hangs" : "it takes new connections, but has ended this one";
    case Reach::refused:
      return "it refuses connections, so its program does not run";
    case Reach::unreachable:
      return fmt::format("it cannot be reached ({})", finding.reason);
    case Reach::timedOut:
      return "nothing comes back, so it is off or cut off";
    case Reach::silent:
      return "it accepts connections, but does not greet, so it is frozen";
    case Reach::closed:
      return "it accepts connections and ends them at once";
    case Reach::noHead:
      return "something else answers in its place";
    case Reach::failed:
      break;
  }
  return fmt::format("this machine cannot connect to it ({})", finding.reason);
}

// A question that may take long: whoever asks can leave it behind, and the session goes when it is answered.
std::future<bool> ask(std::shared_ptr<HeadSession> session) {
  const auto answer = std::make_shared<std::promise<bool>>();
  std::future<bool> answered = answer->get_future();
  runAside([session = std::move(session), answer]() mutable {
    const bool answers = session->answers();
    session.reset();  // first: who hears the answer may end the session, and waits for that
    answer->set_value(answers);
  });
  return answered;
}

}  // namespace

HeadSession::HeadSession(const std::string& address, std::chrono::milliseconds timeout, const std::shared_ptr<WatchQueue>& queue)
    : device_(openAt(address, timeout)) {
  device_.key();  // a session that knows its serial number asks nothing when a trigger comes
  subscription_ = Subscription(device_, [queue, address](std::int32_t event, std::int64_t serial) {
    queue->put(HeadEvent{std::chrono::system_clock::now(), address, event, serial});
  });
}

bool HeadSession::answers() const noexcept {
  try {
    device_.gain();
    return true;
  } catch (...) {
    return false;
  }
}

// Shared with the thread, which may be left behind.
struct WatchedHead::Work {
  const std::string address;
  const WatchSettings settings;
  const std::shared_ptr<WatchQueue> queue;
  std::shared_ptr<HeadSession> session;

  std::mutex mutex;
  std::condition_variable changed;
  bool stopping = false;
  bool ended = false;
  std::atomic<bool> answering = false;
  std::atomic<bool> givenUp = false;

  Work(std::string itsAddress, std::shared_ptr<HeadSession> itsSession, const WatchSettings& itsSettings,
       std::shared_ptr<WatchQueue> itsQueue)
      : address(std::move(itsAddress)),
        settings(itsSettings),
        queue(std::move(itsQueue)),
        session(std::move(itsSession)),
        answering(session != nullptr) {}

  void run();
  void watch();
  void reconnect();
  bool waitForAnswer(const std::future<bool>& answer);
  void examine();
  bool stopsWithin(std::chrono::milliseconds time);
  void tell(HeadNews::Kind kind, const std::string& text = {}) {
    queue->put(HeadNews{std::chrono::system_clock::now(), address, kind, text});
  }
};

bool WatchedHead::Work::stopsWithin(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, time, [this] { return stopping; });
}

void WatchedHead::Work::run() {
  while (!stopsWithin(0ms) && !givenUp) {
    try {
      if (session != nullptr) watch();
      if (stopsWithin(0ms)) break;
      settings.reconnect ? reconnect() : void(givenUp = true);
    } catch (const std::exception&) {  // no thread or no memory to ask with just now
      stopsWithin(askInterval);
    }
  }
  session.reset();
  const std::lock_guard lock(mutex);
  ended = true;
  changed.notify_all();
}

// The head does not answer in time; what becomes of it is another matter.
void WatchedHead::Work::examine() {
  answering = false;
  tell(HeadNews::Kind::silent, describe(probe(address, std::min(settings.timeout, longestExamination)), true));
}

// Whether the answer has come. It is given up when there never will be one, and soon when it is to stop.
bool WatchedHead::Work::waitForAnswer(const std::future<bool>& answer) {
  const auto asked = Clock::now();
  bool examined = false;
  while (answer.wait_for(stopInterval) != std::future_status::ready) {
    if (stopsWithin(0ms)) return answer.wait_for(partingPatience) == std::future_status::ready;
    const auto elapsed = Clock::now() - asked;
    if (elapsed > longestAnswer) return false;
    if (elapsed < patience || examined) continue;
    examine();
    examined = true;
  }
  return true;
}

// Until the connection is lost, or it is to stop.
void WatchedHead::Work::watch() {
  for (;;) {
    std::future<bool> answer = ask(session);
    const bool answered = waitForAnswer(answer);
    if (stopsWithin(0ms)) return;
    if (!answered || !answer.get()) break;
    if (!answering.exchange(true)) tell(HeadNews::Kind::answers);
    if (stopsWithin(askInterval)) return;
  }
  answering = false;
  session.reset();
  tell(HeadNews::Kind::lost, describe(probe(address, std::min(settings.timeout, longestExamination)), false));
}

void WatchedHead::Work::reconnect() {
  const auto lost = Clock::now();
  for (std::chrono::seconds pause = 1s; !stopsWithin(pause); pause = std::min(pause * 2, longestPause)) {
    try {
      session = std::make_shared<HeadSession>(address, settings.timeout, queue);
      answering = true;
      const auto elapsed = std::chrono::round<std::chrono::seconds>(Clock::now() - lost);
      return tell(HeadNews::Kind::back, fmt::format("after {} s", elapsed.count()));
    } catch (const std::exception&) {  // it was told of when it went
    }
  }
}

WatchedHead::WatchedHead(std::string address, std::shared_ptr<HeadSession> session, const WatchSettings& settings,
                         std::shared_ptr<WatchQueue> queue)
    : work_(std::make_shared<Work>(std::move(address), std::move(session), settings, std::move(queue))) {
  runAside([work = work_] { work->run(); });
}

const std::string& WatchedHead::address() const { return work_->address; }
bool WatchedHead::answers() const { return work_->answering; }
bool WatchedHead::isGivenUp() const { return work_->givenUp; }

void WatchedHead::stop() {
  const std::lock_guard lock(work_->mutex);
  work_->stopping = true;
  work_->changed.notify_all();
}

bool WatchedHead::waitUntilEnded(Clock::time_point until) const {
  std::unique_lock lock(work_->mutex);
  return work_->changed.wait_until(lock, until, [this] { return work_->ended; });
}

}  // namespace fringix::tool
