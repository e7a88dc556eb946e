// Triggers: from the datagram sent to the handler entered.
#pragma once

#include <string>
#include <vector>

#include "measurement.h"

namespace fringix::bench {

// Whose listener hears the trigger: that of the process that owns the port, or one that it tells.
enum class Role { receiver, follower };

struct TriggerComparison {
  std::string name;
  Role role;
  std::vector<Quantity> quantities;
};

const std::vector<TriggerComparison>& triggerComparisons();

// All on one core. Throws when a trigger is lost.
Measurement measure(const TriggerComparison& comparison, const Plan& plan);

}  // namespace fringix::bench
