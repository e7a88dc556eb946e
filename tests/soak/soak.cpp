#include "soak/soak.h"

#include <cstdio>
#include <deque>
#include <thread>
#include <vector>

#include "soak/companions.h"
#include "soak/growth.h"
#include "soak/worker.h"
#include "support/eventually.h"
#include "support/process_state.h"
#include "support/sanitizers.h"

namespace fringix::test {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::size_t mostSamples = 900;
constexpr std::size_t fewestSamples = 30;
constexpr seconds longestQuiet{90};  // without a trigger heard; whoever opens a session anew may have to wait for a silent head
constexpr seconds longestEnd{100};   // of threads that were given up

unsigned long long shown(std::uint64_t number) { return number; }

class Soak {
 public:
  explicit Soak(const SoakPlan& plan) : plan_(plan), heads_(plan) {
    for (std::size_t thread = 0; thread < plan.threads; ++thread) workers_.emplace_back(common_, thread);
  }

  bool run() {
    first_ = take();
    samples_.reserve(mostSamples + 1);
    samples_.push_back(first_);
    heads_.misbehave(plan_.seed, plan_.faults);
    std::vector<std::thread> threads;
    for (Worker& worker : workers_) threads.emplace_back([&worker] { worker.run(); });
    std::thread triggers([this] { trigger(); });
    watch();
    common_.over = true;
    triggers.join();
    awaitEnd(threads);
    finish();
    return report();
  }

 private:
  Sample take() const { return {{heapBytes(), residentBytes(), descriptorCount(), threadCount()}, common_.operations}; }

  void trigger() {
    const auto period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / plan_.triggers));
    for (auto next = Clock::now(); !common_.over; next += period) {
      std::this_thread::sleep_until(next);
      heads_.trigger(triggersSent_++ % plan_.heads);
    }
  }

  void watch() {
    const milliseconds interval = std::max(milliseconds(20), plan_.duration / static_cast<int>(mostSamples));
    for (auto line = plan_.linesEvery; Clock::now() < begin_ + plan_.duration && common_.violations.list().empty();) {
      std::this_thread::sleep_for(interval);
      now_ = take();
      if (common_.takingMemory == 0) samples_.push_back(now_);
      for (Worker& worker : workers_) worker.complainWhenStuck();
      expectTriggers();
      if (Clock::now() - begin_ < line) continue;
      printLine();
      line += plan_.linesEvery;
    }
  }

  // Somebody has always been told of one not long ago, here and in the other process.
  void expectTriggers() {
    const std::uint64_t here = common_.triggersHeard, there = follower_.heard();
    if (here != heardHere_) quietHereSince_ = Clock::now();
    if (there != heardThere_) quietThereSince_ = Clock::now();
    heardHere_ = here;
    heardThere_ = there;
    if (Clock::now() - quietHereSince_ > longestQuiet) common_.violations.add("no session hears triggers any more");
    if (Clock::now() - quietThereSince_ > longestQuiet) common_.violations.add("the other process hears no triggers any more");
  }

  void printLine() const {
    std::printf(
        "%5lld s  %8llu operations %6llu openings  triggers %6llu sent, %7llu + %5llu heard  heap %zu KiB, resident %zu KiB, %zu "
        "descriptors, %zu threads\n",
        static_cast<long long>(std::chrono::duration_cast<seconds>(Clock::now() - begin_).count()), shown(now_.operations),
        shown(common_.openings), shown(triggersSent_), shown(heardHere_), shown(heardThere_), now_.held[heap] / 1024,
        now_.held[resident] / 1024, now_.held[descriptors], now_.held[threads]);
    std::fflush(stdout);
  }

  // A thread that never ends cannot be waited for: what there is to say is said, and the process ends.
  void awaitEnd(std::vector<std::thread>& threads) {
    std::atomic<std::size_t> left = threads.size();
    std::thread joining([&] {
      for (std::thread& thread : threads) thread.join(), --left;
    });
    if (!eventually([&] { return left == 0; }, longestCall + seconds(30))) {
      for (Worker& worker : workers_) worker.complainWhenStuck();
      report();
      std::fflush(stdout);
      std::_Exit(1);
    }
    joining.join();
  }

  void finish() {
    for (std::size_t slot = 0; slot < plan_.slots; ++slot) workers_.front().end(slot);
    const auto isAsInTheBeginning = [&](Held held) { return take().held[held] == first_.held[held]; };
    const bool all = eventually([&] { return isAsInTheBeginning(threads) && isAsInTheBeginning(descriptors); }, longestEnd);
    end_ = take();
    if (!all) common_.violations.add("descriptors or threads are left in the end");
    if (common_.triggersHeard == 0 || follower_.heard() == 0) common_.violations.add("no triggers were heard");
  }

  bool report() {
    Tally all;
    for (const Worker& worker : workers_) all.add(worker.tally());
    all.print();
    std::printf("openings: %llu; triggers: %llu sent, %llu heard by sessions here, %llu in the other process; faults that struck: %llu\n",
                shown(common_.openings), shown(triggersSent_), shown(common_.triggersHeard), shown(follower_.heard()),
                shown(heads_.faultsStruck()));
    if (samples_.size() < fewestSamples) std::printf("too few samples to tell whether anything grows\n");
    for (std::size_t held = 0; held < heldKinds; ++held) reportGrowth(static_cast<Held>(held));
    const auto violations = common_.violations.list();
    for (const std::string& violation : violations) std::printf("VIOLATION: %s\n", violation.c_str());
    std::printf("seed %llu: %s\n", shown(plan_.seed), violations.empty() ? "nothing was wrong" : "WRONG, see above");
    return violations.empty();
  }

  void reportGrowth(Held held) {
    if (samples_.size() < fewestSamples) return;
    const Growth growth = growthOf(samples_, held);
    std::printf("%s; in the end %zu%s\n", describe(held, growth).c_str(), end_.held[held] / kindOf(held).perUnit, kindOf(held).unit);
    const bool isMemory = held == heap || held == resident;
    if (growth.tooMuch && !(isMemory && builtWithSanitizers)) common_.violations.add(std::string(kindOf(held).name) + " grows");
  }

  const SoakPlan& plan_;
  Heads heads_;
  Follower follower_;
  Common common_{plan_, heads_};
  std::deque<Worker> workers_;
  std::vector<Sample> samples_;
  Sample first_, now_, end_;
  const Clock::time_point begin_ = Clock::now();
  std::atomic<std::uint64_t> triggersSent_ = 0;
  std::uint64_t heardHere_ = 0, heardThere_ = 0;
  Clock::time_point quietHereSince_ = begin_, quietThereSince_ = begin_;
};

}  // namespace

bool soak(const SoakPlan& plan) {
  std::printf("seed %llu, %zu heads, %zu threads, %zu sessions, %.0f operations and %.0f triggers a second, %g of the commands go wrong\n",
              shown(plan.seed), plan.heads, plan.threads, plan.slots, plan.rate * static_cast<double>(plan.threads), plan.triggers,
              plan.faults);
  std::fflush(stdout);
  return Soak(plan).run();
}

}  // namespace fringix::test
