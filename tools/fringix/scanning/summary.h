// A scan in words and numbers.
#pragma once

#include <span>

#include "console/json.h"
#include "report/report.h"
#include "scanning/scan_result.h"
#include "scanning/steps.h"

namespace fringix::tool {

ReportTable summaryOf(const ScanResult& result);
ReportTable timesOf(std::span<const StepTime> times);
ReportTable reasonsOf(const ScanResult& result);  // why pixels give no point

// All that scan.json has. `unit` is that of the coordinates in the files.
Json describe(const ScanResult& result, std::span<const StepTime> times, const std::string& unit);

}  // namespace fringix::tool
