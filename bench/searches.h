// Searches for heads: from the first request to the list.
#pragma once

#include <string>
#include <vector>

#include "measurement.h"

namespace fringix::bench {

struct SearchComparison {
  std::string name;
  int heads;  // that answer in each of the private networks
  std::vector<Quantity> quantities;
};

const std::vector<SearchComparison>& searchComparisons();

// In the private networks only, and all on one core. A search mostly waits, so a few rounds tell enough. Throws when a head is missed.
Measurement measure(const SearchComparison& comparison, const Plan& plan);

}  // namespace fringix::bench
