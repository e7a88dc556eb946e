#include "head/faults/random_faults.h"

#include <array>
#include <string>

namespace fringix::head {

namespace {

// SplitMix64: well mixed from any seed, and begun anew for each occasion.
class Draw {
 public:
  Draw(std::uint64_t seed, std::uint64_t n) : state_(mixed(seed) ^ mixed(~n)) {}

  std::uint64_t below(std::uint64_t limit) { return next() % limit; }
  double share() { return static_cast<double>(next() >> 11U) * 0x1p-53; }  // 0 to below 1

 private:
  static std::uint64_t mixed(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
  }

  std::uint64_t next() { return mixed(state_ += 0x9E3779B97F4A7C15U); }

  std::uint64_t state_;
};

// Replies are of few bytes or very many, so each power of two is as likely as the others.
std::int64_t drawByte(Draw& draw) { return static_cast<std::int64_t>(draw.below(std::uint64_t{1} << draw.below(21))); }

std::chrono::milliseconds drawTime(Draw& draw) { return std::chrono::milliseconds(1 + draw.below(2000)); }

std::string inWords(const Fault& fault) {
  const std::string number = std::to_string(fault.number);
  const std::string time = std::to_string(fault.time.count()) + " ms";
  switch (fault.action) {
    case FaultAction::stall:
      return "stall at byte " + number + " for " + time;
    case FaultAction::reset:
      return "reset at byte " + number;
    case FaultAction::cut:
      return "cut at byte " + number;
    case FaultAction::slowLink:
      return "slow link " + number;
    case FaultAction::wrongStatus:
      return "wrong status " + number;
    case FaultAction::wrongLength:
      return "wrong length " + number;
    case FaultAction::noPicture:
      return "no picture";
    case FaultAction::lostTrigger:
      return "lost trigger";
    default:
      return "doubled trigger";
  }
}

Fault drawAction(Draw& draw, Occasion occasion) {
  constexpr std::array ofCommands{FaultAction::stall,    FaultAction::reset,       FaultAction::cut,
                                  FaultAction::slowLink, FaultAction::wrongStatus, FaultAction::wrongLength};
  Fault fault;
  if (occasion == Occasion::trigger) {
    fault.action = draw.below(2) == 0 ? FaultAction::lostTrigger : FaultAction::doubledTrigger;
    return fault;
  }
  const std::uint64_t choice = draw.below(ofCommands.size() + (occasion == Occasion::picture ? 1 : 0));
  fault.action = choice < ofCommands.size() ? ofCommands[choice] : FaultAction::noPicture;
  if (fault.action == FaultAction::stall || fault.action == FaultAction::reset || fault.action == FaultAction::cut)
    fault.number = drawByte(draw);
  if (fault.action == FaultAction::stall) fault.time = drawTime(draw);
  if (fault.action == FaultAction::slowLink) fault.number = 100000 + static_cast<std::int64_t>(draw.below(10000000));
  if (fault.action == FaultAction::wrongStatus) fault.number = -1 - static_cast<std::int64_t>(draw.below(30));
  if (fault.action == FaultAction::wrongLength) fault.number = draw.below(2) == 0 ? -1 : 1 + static_cast<std::int64_t>(draw.below(16));
  return fault;
}

}  // namespace

std::optional<Fault> drawFault(const Fault& random, std::uint64_t n, Occasion occasion) {
  Draw draw(static_cast<std::uint64_t>(random.number), n);
  if (draw.share() >= random.rate) return std::nullopt;
  Fault fault = drawAction(draw, occasion);
  fault.text = random.text + " " + std::to_string(n) + ": " + inWords(fault);
  return fault;
}

}  // namespace fringix::head
