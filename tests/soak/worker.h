// One thread of a soak: carries out its choices, and looks whether what comes of them may be.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "soak/choices.h"
#include "soak/companions.h"
#include "soak/plan.h"
#include "soak/sessions.h"
#include "soak/tally.h"

namespace fringix::test {

// What the threads have in common.
struct Common {
  const SoakPlan& plan;
  Heads& heads;
  Slots slots{plan.slots};
  Violations violations{};
  std::atomic<bool> over{false};
  std::atomic<int> takingMemory{0};  // calls under way, for which any amount may be held
  std::atomic<std::uint64_t> operations{0};
  std::atomic<std::uint64_t> openings{0};
  TriggerCount triggersHeard{0};
};

class Worker {
 public:
  Worker(Common& common, std::size_t thread) : common_(common), choices_(common.plan.seed, thread, common.plan.slots) {}

  void run();
  void end(std::size_t slot);  // what is in it

  const Tally& tally() const { return tally_; }
  void complainWhenStuck();  // from another thread

 private:
  using Clock = std::chrono::steady_clock;

  void carryOut(const Choice& choice);
  void call(Session& session, std::size_t which);
  void callLocally(Session& session, std::size_t which);
  void renew(std::size_t slot, bool bySerial);
  std::shared_ptr<Session> open(std::size_t head, bool bySerial);
  std::shared_ptr<Session> welcome(std::shared_ptr<Session> session);
  void end(Session& session);
  void callUnknown(std::size_t which);
  void search(std::size_t slot);  // and opens a session by serial number
  void note(Session& session, const char* function, int result);

  template <class Function>
  int timed(const char* name, Function function);
  void require(bool condition, const char* name, int result);

  Common& common_;
  Choices choices_;
  Tally tally_;
  std::atomic<Clock::duration::rep> began_{0};  // the operation under way; 0: none
  std::atomic<const char*> underWay_{""};
};

}  // namespace fringix::test
