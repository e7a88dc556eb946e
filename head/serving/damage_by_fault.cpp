#include "head/serving/damage_by_fault.h"

#include <algorithm>

namespace fringix::head {

namespace {

void end(Damage& damage, Ending ending, const Fault& fault) {
  damage.ending = ending;
  damage.endsAt = static_cast<std::uint64_t>(fault.number);
}

void stall(Damage& damage, const Fault& fault, std::chrono::milliseconds patience) {
  const bool ends = fault.time > withoutEnd;
  end(damage, ends ? Ending::stall : Ending::silence, fault);
  damage.endingTime = ends ? fault.time : patience;
}

void slow(Damage& damage, std::int64_t rate) {
  constexpr std::int64_t stepsASecond = 50;
  const std::int64_t step = std::max<std::int64_t>(rate / stepsASecond, 1);
  damage.stepSize = static_cast<std::uint64_t>(step);
  damage.stepTime = std::chrono::milliseconds(1000 * step / rate);
  damage.slowsRequest = true;
}

void drip(Damage& damage, std::chrono::milliseconds pause) {
  damage.stepSize = 1;
  damage.stepTime = pause;
  damage.slowsRequest = false;
}

}  // namespace

Damage damageBy(std::span<const Fault> faults, std::chrono::milliseconds patience) {
  Damage damage;
  for (const Fault& fault : faults) {
    switch (fault.action) {
      case FaultAction::stall:
        stall(damage, fault, patience);
        break;
      case FaultAction::reset:
        end(damage, Ending::reset, fault);
        break;
      case FaultAction::cut:
        end(damage, Ending::cut, fault);
        break;
      case FaultAction::drip:
        drip(damage, fault.time);
        break;
      case FaultAction::slowLink:
        slow(damage, fault.number);
        break;
      case FaultAction::wrongStatus:
        damage.status = static_cast<std::int32_t>(fault.number);
        break;
      case FaultAction::wrongLength:
        damage.surplus = fault.number;
        break;
      case FaultAction::noPicture:
        damage.noPicture = true;
        break;
      default:  // of the whole head, or of triggers
        break;
    }
  }
  return damage;
}

}  // namespace fringix::head
