#include "console/interruption.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace fringix::tool {
namespace {

int living = 0;  // on one thread
std::atomic<bool> noted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only touch what needs no lock");

void note(int) {
  noted = true;
  std::signal(SIGINT, SIG_DFL);
}

}  // namespace

Interruption::Interruption() {
  if (living++ > 0) return;
  noted = false;
  std::signal(SIGINT, note);
}

Interruption::~Interruption() {
  if (--living == 0) std::signal(SIGINT, SIG_DFL);
}

// A signal handler can wake no sleeper.
bool Interruption::waitFor(std::chrono::duration<double> time) const {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::duration<double> step = std::chrono::milliseconds(50);
  const auto start = Clock::now();
  for (auto left = time; !noted && left.count() > 0; left = time - (Clock::now() - start))
    std::this_thread::sleep_for(std::min(left, step));
  return noted;
}

}  // namespace fringix::tool
