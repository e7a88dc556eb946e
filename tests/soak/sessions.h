// The sessions of a soak: slots that its threads share, each for one head.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "soak/session_states.h"

namespace fringix::test {

struct Session {
  Session(std::int32_t given, std::size_t of) : handle(given), head(of) {}

  Knowledge known() const { return {failed, freeing > 0, freed}; }

  const std::int32_t handle;
  const std::size_t head;
  std::atomic<bool> failed{false};
  std::atomic<int> freeing{0};  // how many have begun to
  std::atomic<bool> freed{false};
  std::atomic<int> callers{0};  // at the moment
  std::atomic<int> breaks{0};   // how often it gave SLCONNECTION_ERROR
};

class Slots {
 public:
  explicit Slots(std::size_t count) : sessions_(count) {}

  std::shared_ptr<Session> get(std::size_t slot) {
    const std::lock_guard guard(mutex_);
    return sessions_[slot];
  }
  std::shared_ptr<Session> put(std::size_t slot, std::shared_ptr<Session> session) {
    const std::lock_guard guard(mutex_);
    return std::exchange(sessions_[slot], std::move(session));
  }
  std::size_t size() const { return sessions_.size(); }

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<Session>> sessions_;
};

}  // namespace fringix::test
