// The reader of calibrations: what it takes it can write, and reads back the same.
#include "fuzz/target.h"
#include "scan/calibration_json.h"
#include "scan/failure.h"

namespace fringix::fuzz::calibration_target {

namespace {

void run(Bytes input) {
  scan::Calibration calibration;
  try {
    calibration = scan::calibrationFrom(textOf(input));
  } catch (const scan::Failure&) {
    return;
  }
  const std::string written = scan::textOf(calibration);
  require(scan::textOf(scan::calibrationFrom(written)) == written, "what was read is written and read back");
}

const Registered target("calibration", run);

}  // namespace

}  // namespace fringix::fuzz::calibration_target
