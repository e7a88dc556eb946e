#include "head/faults/fault_plan.h"

#include <utility>

#include "head/faults/random_faults.h"

namespace fringix::head {

namespace {

bool isCommand(Occasion occasion) { return occasion == Occasion::command || occasion == Occasion::picture; }

bool concerns(const Fault& fault, Occasion occasion, std::string_view command) {
  if (!fault.command.empty()) return means(fault.command, command);
  return fault.counted == Occasion::picture ? occasion == Occasion::picture : isCommand(occasion);
}

bool counts(const Fault& fault, Occasion occasion, std::string_view command) {
  if (fault.action == FaultAction::random) return isCommand(occasion) || occasion == Occasion::trigger;
  return fault.counted == Occasion::trigger ? occasion == Occasion::trigger : concerns(fault, occasion, command);
}

// Whether it can be struck at all here.
bool fits(const Fault& fault, Occasion occasion, std::string_view command) {
  switch (fault.action) {
    case FaultAction::lostTrigger:
    case FaultAction::doubledTrigger:
      return occasion == Occasion::trigger;
    case FaultAction::noPicture:
      return occasion == Occasion::picture && concerns(fault, occasion, command);
    case FaultAction::frozen:
    case FaultAction::restart:
      if (fault.delay > withoutEnd) return occasion == Occasion::moment;
      break;
    default:
      break;
  }
  return concerns(fault, occasion, command);
}

// What strikes from an entry now, if anything; counts the occasion.
std::optional<Fault> meet(FaultPlan::Entry& entry, Occasion occasion, std::string_view command) {
  const Fault& fault = entry.fault;
  const bool due = entry.seen >= fault.after && std::chrono::steady_clock::now() - entry.set >= fault.delay;
  const bool counted = counts(fault, occasion, command);
  if (counted) ++entry.seen;
  std::optional<Fault> struck;
  if (fault.action == FaultAction::random && counted)
    struck = drawFault(fault, entry.seen, occasion);
  else if (fault.action != FaultAction::random && due && entry.struck < fault.times && fits(fault, occasion, command))
    struck = fault;
  if (struck) ++entry.struck;
  return struck;
}

}  // namespace

void FaultPlan::add(Fault fault) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({std::move(fault), Clock::now()});
  calm_ = false;
  ++edition_;
}

void FaultPlan::clear() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  frozenUntil_ = {};
  calm_ = !restarting_;
  ++edition_;
}

std::vector<FaultPlan::Entry> FaultPlan::entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

std::vector<Fault> FaultPlan::strike(Occasion occasion, std::string_view command) {
  std::vector<Fault> struck;
  if (calm_) return struck;
  const std::lock_guard lock(mutex_);
  for (Entry& entry : entries_) {
    if (auto fault = meet(entry, occasion, command)) struck.push_back(std::move(*fault));
  }
  for (const Fault& fault : struck) strikeHead(fault);
  return struck;
}

void FaultPlan::strikeHead(const Fault& fault) {
  if (fault.action == FaultAction::frozen) frozenUntil_ = fault.time == withoutEnd ? Clock::time_point::max() : Clock::now() + fault.time;
  if (fault.action != FaultAction::restart || restarting_) return;
  restart_ = fault.time;
  restarting_ = true;
}

bool FaultPlan::away() const {
  if (calm_) return false;
  const std::lock_guard lock(mutex_);
  return restarting_ || Clock::now() < frozenUntil_;
}

std::optional<std::chrono::milliseconds> FaultPlan::takeRestart() {
  if (calm_) return std::nullopt;
  const std::lock_guard lock(mutex_);
  return std::exchange(restart_, std::nullopt);
}

void FaultPlan::restarted() {
  const std::lock_guard lock(mutex_);
  restart_.reset();
  restarting_ = false;
  calm_ = entries_.empty();
}

}  // namespace fringix::head
