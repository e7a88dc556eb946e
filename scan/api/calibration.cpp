#include <algorithm>
#include <string>

#include "export.h"
#include "records.h"
#include "scan/calibration_json.h"

namespace fringix::scan {

namespace {

Optics opticsFrom(const SLScanOptics& record) {
  const double* const k = record.distortion;
  Optics optics{record.width, record.height, record.fx, record.fy, record.cx, record.cy, {k[0], k[1], k[2], k[3], k[4]}, {}, {}};
  for (std::size_t i = 0; i < 9; ++i) optics.rotation[i / 3][i % 3] = record.rotation[i];
  std::copy_n(record.translation, 3, optics.translation.begin());
  return optics;
}

SLScanOptics recordOf(const Optics& optics) {
  const Distortion& lens = optics.distortion;
  SLScanOptics record = {
      optics.width, optics.height, optics.fx, optics.fy, optics.cx, optics.cy, {lens.k1, lens.k2, lens.p1, lens.p2, lens.k3}, {}, {}};
  for (std::size_t i = 0; i < 9; ++i) record.rotation[i] = optics.rotation[i / 3][i % 3];
  std::copy_n(optics.translation.begin(), 3, record.translation);
  return record;
}

}  // namespace

Calibration calibrationFrom(const SLScanCalibration& record) {
  if (record.cameraCount < 1 || record.cameraCount > static_cast<std::int32_t>(mostCameras)) {
    throw Failure(Status::badCalibration, "calibration: " + std::to_string(record.cameraCount) + " cameras; 1 to 4 are possible");
  }
  Calibration calibration;
  calibration.serial = record.serial;
  calibration.date.assign(record.date, std::find(record.date, record.date + sizeof record.date, '\0'));
  for (std::int32_t i = 0; i < record.cameraCount; ++i) calibration.cameras.push_back(opticsFrom(record.cameras[i]));
  calibration.projector = opticsFrom(record.projector);
  return calibration;
}

SLScanCalibration recordOf(const Calibration& calibration) {
  SLScanCalibration record = {};
  record.serial = calibration.serial;
  std::copy(calibration.date.begin(), calibration.date.end(), record.date);
  record.cameraCount = static_cast<std::int32_t>(calibration.cameras.size());
  for (std::size_t i = 0; i < calibration.cameras.size(); ++i) record.cameras[i] = recordOf(calibration.cameras[i]);
  record.projector = recordOf(calibration.projector);
  return record;
}

}  // namespace fringix::scan

using namespace fringix::scan;

extern "C" {

int32_t SLScanCalibrationRead(const char* text, uint32_t length, SLScanCalibration* calibration) {
  return guarded([&] {
    requireNotNull({text, calibration});
    *calibration = recordOf(fringix::scan::calibrationFrom(std::string_view(text, length)));
  });
}

int32_t SLScanCalibrationWrite(const SLScanCalibration* calibration, char* text, uint32_t capacity, uint32_t* length) {
  return guarded([&] {
    requireNotNull({calibration, length});
    if (capacity > 0) requireNotNull({text});
    const Calibration checked = fringix::scan::calibrationFrom(*calibration);
    check(checked);
    const std::string written = textOf(checked);
    *length = static_cast<std::uint32_t>(written.size());
    if (capacity <= written.size()) {
      throw Failure(Status::badParameter, "the text has " + std::to_string(written.size()) + " bytes and a zero; room for " +
                                              std::to_string(capacity) + " was given");
    }
    std::copy_n(written.c_str(), written.size() + 1, text);
  });
}
}
