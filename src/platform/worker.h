// One thread that works for an object, with an end that is bounded in time.
//
// A worker that does not end in time is ended by force on Windows: it stops where it is, and what it held stays held. Elsewhere it is
// abandoned: it goes on, but thisWorkerIsAbandoned() tells it that nobody wants its work any more.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace fringix::platform {

class Worker {
 public:
  using Body = std::int32_t (*)(void* argument);

  Worker() noexcept;
  ~Worker();  // the worker must have ended, or been let go of by end()
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Runs body(argument) on a new thread. 0, or the system's error code. `share` stays alive as long as the worker may touch what it
  // shares, which is longer than this object lives when the worker is abandoned.
  std::uint32_t start(Body body, void* argument, std::shared_ptr<void> share) noexcept;

  bool held() const noexcept { return thread_ != nullptr; }  // started, and not yet let go of by end()

  // Waits for the worker's end, up to `limit`, and lets go of it either way. True when it ended by itself. A worker that ends itself
  // waits for the whole limit.
  bool end(std::chrono::milliseconds limit) noexcept;

  static bool isEndedByForce() noexcept;  // what becomes of a worker that does not end in time; false: it is abandoned

 private:
  struct Thread;
  std::unique_ptr<Thread> thread_;
};

// Whether the calling thread is a worker that end() has given up on.
bool thisWorkerIsAbandoned() noexcept;

}  // namespace fringix::platform
