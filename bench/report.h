// Turns measurements into ratios and verdicts, as a table for people and as JSON for programs.
#pragma once

#include <string>
#include <vector>

#include "machine.h"
#include "measurement.h"

namespace fringix::bench {

struct Summary {  // of the rounds
  double median;
  double lowest;
  double highest;
};

struct Finding {
  std::string comparison;
  Quantity quantity;
  Summary library;
  Summary byHand;
  double ratio;  // of the medians, library to minimal client
  bool met;      // true also where there is no bound
};

std::vector<Finding> findingsOf(const Measurement& measurement);

void printHeading(const MachineFacts& machine, const Plan& plan);
void printFindings(const std::vector<Finding>& findings);
void writeJson(const std::string& path, const MachineFacts& machine, const Plan& plan, const std::vector<Finding>& findings);

}  // namespace fringix::bench
