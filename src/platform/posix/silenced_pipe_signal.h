// While it lives, writing to a pipe without a reader raises no signal in this thread.
#pragma once

#include <csignal>
#include <ctime>

namespace fringix::platform {

class SilencedPipeSignal {
 public:
  SilencedPipeSignal() noexcept {
    sigemptyset(&pipeSignal_);
    sigaddset(&pipeSignal_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipeSignal_, &before_);
  }

  ~SilencedPipeSignal() {
    const timespec noTime{};
    if (!wasPending_) sigtimedwait(&pipeSignal_, nullptr, &noTime);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  SilencedPipeSignal(const SilencedPipeSignal&) = delete;
  SilencedPipeSignal& operator=(const SilencedPipeSignal&) = delete;

 private:
  sigset_t pipeSignal_;
  sigset_t before_;
  bool wasPending_ = false;
};

}  // namespace fringix::platform
