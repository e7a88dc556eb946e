#include "head/serving/head_server.h"

#include <chrono>
#include <exception>
#include <stdexcept>
#include <utility>

#include "platform/clock.h"

namespace fringix::head {

namespace {

constexpr std::chrono::milliseconds stopInterval{50};
constexpr std::chrono::milliseconds restartInterval{10};
constexpr std::chrono::milliseconds tellInterval{1000};

}  // namespace

HeadServer::HeadServer(HeadSettings settings, Observer observer)
    : model_(std::move(settings)),
      triggers_(model_.settings().address),
      observer_(std::move(observer)),
      announcer_(model_, faults_, [this](const std::string& client) {
        if (observer_) observer_(Happening::found, client, "");
      }) {
  if (const auto wired = model_.settings().triggerLine)
    model_.lines().observeRises([this, wired](std::int32_t line) {
      if (line == *wired) raiseTrigger();
    });
}

void HeadServer::start() {
  listener_ = ports::listenOn(model_.settings().address);
  announcer_.start();
  stopping_ = false;
  acceptor_ = std::thread([this] { acceptClients(); });
}

void HeadServer::stop() noexcept {
  if (!acceptor_.joinable()) return;
  stopping_ = true;
  announcer_.stop();
  {
    const std::lock_guard lock(listenerMutex_);
    listener_.shutdown();
  }
  acceptor_.join();
  faults_.restarted();  // a restart that had not begun, too
  for (Session& session : sessions_) session.requestStop();
  sessions_.clear();
  listener_.close();
}

std::size_t HeadServer::raiseTrigger() {
  std::size_t copies = 1;
  for (const Fault& fault : faults_.strike(Occasion::trigger)) {
    if (fault.action == FaultAction::lostTrigger) copies = 0;
    if (fault.action == FaultAction::doubledTrigger) copies *= 2;
  }
  std::size_t hosts = 0;
  for (; copies > 0 && !faults_.away(); --copies) hosts = triggers_.raise();
  return hosts;
}

void HeadServer::acceptClients() noexcept {
  while (!stopping_) {
    const platform::Readiness readiness = listener_.waitReadable(stopInterval);
    if (stopping_) return;
    forgetFinished();
    try {
      if (faultsKeepAway()) continue;
      if (readiness != platform::Readiness::timedOut) acceptClient();
      tellRefusals();
    } catch (const std::exception&) {
      platform::sleepFor(stopInterval);  // no thread or no memory for this client just now
    }
  }
}

void HeadServer::acceptClient() {
  platform::Ipv4Endpoint peer;
  platform::Socket socket = listener_.accept(&peer);
  if (!socket.valid()) return platform::sleepFor(stopInterval);  // out of descriptors, say: do not spin
  if (sessions_.size() >= model_.settings().mostClients) {
    ++refused_;
    lastRefused_ = peer;
    return;
  }
  socket.setNoDelay(true);
  std::list<Session> added;  // stays out of the others where there is no thread for it
  added.emplace_back(std::move(socket), peer, model_, faults_, triggers_, observer_).start();
  sessions_.splice(sessions_.end(), added);
}

// Whether nobody is to be accepted just now.
bool HeadServer::faultsKeepAway() {
  for (const Fault& fault : faults_.strike(Occasion::moment)) {
    if (observer_) observer_(Happening::fault, model_.settings().address, fault.text);
  }
  if (const auto gone = faults_.takeRestart()) {
    restart(*gone);
    return true;
  }
  const bool away = faults_.away();
  if (away) platform::sleepFor(stopInterval);  // whoever knocks waits
  return away;
}

// What the head knows stays.
void HeadServer::restart(std::chrono::milliseconds gone) {
  for (Session& session : sessions_) session.requestReset();
  sessions_.clear();
  {
    const std::lock_guard lock(listenerMutex_);
    listener_.close();
  }
  const auto end = std::chrono::steady_clock::now() + gone;
  while (!stopping_ && (std::chrono::steady_clock::now() < end || !listenAgain())) platform::sleepFor(restartInterval);
  faults_.restarted();
}

bool HeadServer::listenAgain() noexcept {
  try {
    platform::Socket listener = ports::listenOn(model_.settings().address);
    const std::lock_guard lock(listenerMutex_);
    listener_ = std::move(listener);
    return true;
  } catch (const std::exception&) {  // the port is still held, or no descriptor is free
    return false;
  }
}

void HeadServer::forgetFinished() {
  sessions_.remove_if([](const Session& session) { return session.finished(); });
}

// Once a second at most: a flood of clients is no flood of messages.
void HeadServer::tellRefusals() {
  const auto now = std::chrono::steady_clock::now();
  if (refused_ == 0 || now < nextTelling_) return;
  nextTelling_ = now + tellInterval;
  const std::string reason = std::to_string(model_.settings().mostClients) + " clients are connected already";
  const std::string count = refused_ == 1 ? "" : " (" + std::to_string(refused_) + " connections refused)";
  refused_ = 0;
  if (observer_) observer_(Happening::refused, nameOf(lastRefused_), reason + count);
}

}  // namespace fringix::head
