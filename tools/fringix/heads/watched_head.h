// A head that is watched: a thread of its own hears its events and asks it something every few seconds, so that a head that is gone,
// frozen or out of reach is told of within 10 seconds, whatever other heads do.
#pragma once

#include <chrono>
#include <fringix/fringix.hpp>
#include <memory>
#include <string>

#include "heads/watch_queue.h"

namespace fringix::tool {

// A session whose events go to a queue.
class HeadSession {
 public:
  // Throws Failure or Error when the head cannot be opened.
  HeadSession(const std::string& address, std::chrono::milliseconds timeout, const std::shared_ptr<WatchQueue>& queue);

  bool answers() const noexcept;  // asks the head; blocks up to 30 seconds, as every command does

 private:
  Device device_;
  Subscription subscription_;  // ends before its device does
};

struct WatchSettings {
  std::chrono::milliseconds timeout{};  // of every try to connect
  bool reconnect = false;
};

class WatchedHead {
 public:
  // Without a session, the head has been told of as missing and is waited for.
  WatchedHead(std::string address, std::shared_ptr<HeadSession> session, const WatchSettings& settings, std::shared_ptr<WatchQueue> queue);
  ~WatchedHead() { stop(); }
  WatchedHead(const WatchedHead&) = delete;
  WatchedHead& operator=(const WatchedHead&) = delete;

  const std::string& address() const;
  bool answers() const;    // by what is known
  bool isGivenUp() const;  // lost, and not waited for

  // Ending takes a moment, and where the head does not answer up to 30 seconds: who does not wait for it may leave it behind.
  void stop();
  bool waitUntilEnded(std::chrono::steady_clock::time_point until) const;

 private:
  struct Work;
  std::shared_ptr<Work> work_;
};

}  // namespace fringix::tool
