#include "interposer/plan.h"

#include <atomic>

namespace fringix::shortage {

namespace {

struct Plan {
  std::atomic<int> function{nothing};
  int failure = nothing;
  unsigned first = 0;
  bool lasting = false;
};

Plan plan;
Counts ownCounts;
Counts* counts = &ownCounts;
std::atomic<bool> everyThread{false};
std::atomic<bool> inAHurry{false};
std::atomic<long> blocks{0};

// Found without a call: the first one in a thread would take memory.
__attribute__((tls_model("initial-exec"))) thread_local bool thisThread = false;

bool strikes(unsigned call) noexcept {
  if (call <= plan.first || !plan.lasting) return call == plan.first;
  return !passes(plan.failure) || (call - plan.first) % 3 != 2;
}

}  // namespace

bool watched() noexcept { return thisThread || everyThread; }
bool isWatched() noexcept { return thisThread; }

bool setWatched(bool on) noexcept {
  const bool before = thisThread;
  thisThread = on;
  return before;
}

bool hurries() noexcept { return inAHurry && watched(); }
void noteBlocks(long more) noexcept { blocks += more; }

int strike(Function function, bool canBeShort) noexcept {
  if (!watched()) return nothing;
  const bool planned = plan.function == function;
  if (planned && (plan.failure == shortCount || plan.failure == endOfFile) && !canBeShort) return nothing;
  const unsigned call = counts->calls[function]++;
  if (!planned || !strikes(call)) return nothing;
  ++counts->struck;
  return plan.failure;
}

void countIn(Counts& place) noexcept { counts = &place; }

}  // namespace fringix::shortage

using namespace fringix::shortage;

FRINGIX_INTERPOSED const int shortage_no_failure = nothing;

FRINGIX_INTERPOSED const char* shortage_function(int function) {
  return function >= 0 && function < functionCount ? rows[function].name : nullptr;
}

FRINGIX_INTERPOSED const int* shortage_failures(int function) { return rows[function].failures; }

FRINGIX_INTERPOSED int shortage_is_harmless(int failure) { return failure == shortCount || isHarmless(failure) ? 1 : 0; }

FRINGIX_INTERPOSED const char* shortage_failure_name(int failure) {
  if (failure == shortCount) return "short count";
  return failure == endOfFile ? "end" : nameOf(failure);
}

FRINGIX_INTERPOSED void shortage_plan(int function, int failure, unsigned first, int lasting) {
  plan.function = nothing;
  plan.failure = failure;
  plan.first = first;
  plan.lasting = lasting != 0;
  counts->struck = 0;
  for (auto& calls : counts->calls) calls = 0;
  plan.function = function;
}

FRINGIX_INTERPOSED unsigned shortage_end() {
  plan.function = nothing;
  return counts->struck;
}

FRINGIX_INTERPOSED unsigned shortage_calls(int function) { return counts->calls[function]; }

FRINGIX_INTERPOSED void shortage_watch(int on) { thisThread = on != 0; }
FRINGIX_INTERPOSED void shortage_watch_all() { everyThread = true; }
FRINGIX_INTERPOSED long shortage_blocks() { return blocks; }
FRINGIX_INTERPOSED void shortage_hurry(int on) { inAHurry = on != 0; }
