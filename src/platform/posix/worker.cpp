#include "platform/worker.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/process_wide.h"

namespace fringix::platform {

namespace {

// What a worker and its owner know of each other; the worker holds a share of it.
class Progress {
 public:
  void finish() noexcept {
    const std::lock_guard guard(lock_);
    finished_ = true;
    changed_.notify_all();
  }

  bool waitForEnd(std::chrono::milliseconds limit) noexcept {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, limit, [&] { return finished_; });
  }

  std::atomic<bool> abandoned{false};

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool finished_ = false;
};

// In a library that is loaded late, the first look at such a variable takes memory in each thread, and glibc ends the process where there
// is none; unless it lies in what every thread has from its beginning.
#ifdef __GLIBC__
[[gnu::tls_model("initial-exec")]]
#endif
thread_local Progress* thisWorker = nullptr;

// Forked from a callback: whom it works for is its parent's.
void giveUp() noexcept {
  if (thisWorker != nullptr) thisWorker->abandoned = true;
}

[[maybe_unused]] const bool told = inForkedChildren(giveUp);

// Signals are the host's: its handlers run on its own threads. Only these come to a worker: faults, which blocked would end the process
// past the handler; and what runtimes with garbage collection stop their threads with, for a worker that has called such a host back is
// one of them, and a collection waits until all have stopped.
constexpr std::array passing = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT, SIGPWR, SIGXCPU};

class SentSignalsBlocked {
 public:
  SentSignalsBlocked() noexcept {
    sigset_t sent;
    sigfillset(&sent);
    for (const int signal : passing) sigdelset(&sent, signal);
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) sigdelset(&sent, signal);  // of which each runtime takes those that are free
    pthread_sigmask(SIG_BLOCK, &sent, &before_);
  }
  ~SentSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SentSignalsBlocked(const SentSignalsBlocked&) = delete;
  SentSignalsBlocked& operator=(const SentSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

struct Worker::Thread {
  std::shared_ptr<Progress> progress = std::make_shared<Progress>();
  std::thread thread;
};

Worker::Worker() noexcept = default;
Worker::~Worker() = default;

std::uint32_t Worker::start(Body body, void* argument, std::shared_ptr<void> share) noexcept {
  try {
    auto started = std::make_unique<Thread>();
    const SentSignalsBlocked blocked;  // a new thread inherits the mask
    started->thread = std::thread([body, argument, share = std::move(share), progress = started->progress]() mutable {
      thisWorker = progress.get();
      body(argument);
      share.reset();
      progress->finish();
    });
    thread_ = std::move(started);
    return 0;
  } catch (const std::system_error& error) {
    return static_cast<std::uint32_t>(error.code().value());
  } catch (...) {
    return static_cast<std::uint32_t>(std::errc::not_enough_memory);
  }
}

bool Worker::end(std::chrono::milliseconds limit) noexcept {
  const std::unique_ptr<Thread> ending = std::move(thread_);
  const bool ended = ending->progress->waitForEnd(limit);
  if (ended) {
    ending->thread.join();
  } else {
    ending->progress->abandoned = true;
    ending->thread.detach();
  }
  return ended;
}

bool Worker::isEndedByForce() noexcept { return false; }

bool thisWorkerIsAbandoned() noexcept { return thisWorker != nullptr && thisWorker->abandoned; }

}  // namespace fringix::platform
