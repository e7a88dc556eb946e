// The records of scan.h and what the library makes of them.
#pragma once

#include "fringix/scan.h"
#include "scan/calibration.h"
#include "scan/plan.h"

namespace fringix::scan {

PlanSettings planFrom(const SLScanPlan& plan);
Calibration calibrationFrom(const SLScanCalibration& record);
SLScanCalibration recordOf(const Calibration& calibration);

}  // namespace fringix::scan
