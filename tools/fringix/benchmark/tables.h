// A benchmark as text, for people.
#pragma once

#include <string>

#include "benchmark/findings.h"

namespace fringix::tool {

// Each with a line end.
std::string tableOf(const Findings& findings);
std::string histogramOf(const Measured& measured);  // of what has samples

struct NamedFindings {
  std::string name;  // of the file
  Findings findings;
};

// Side by side, with the ratio of the second to the first.
std::string comparisonOf(const NamedFindings& first, const NamedFindings& second);
Json describeComparison(const NamedFindings& first, const NamedFindings& second);

}  // namespace fringix::tool
