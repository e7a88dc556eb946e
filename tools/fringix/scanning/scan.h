// The recipe of a scan: from patterns, or from pictures of an earlier scan, to points.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "scanning/acquisition.h"
#include "scanning/place.h"
#include "scanning/scan_result.h"
#include "scanning/steps.h"

namespace fringix::tool {

// Where calibration, truth and plan come from. `calibrationFile` takes the place of the head's or the folder's own calibration when it
// is not empty; the truth is read when it is wanted.
struct ScanWishes {
  std::string calibrationFile;
  bool wantsTruth = false;
  std::vector<std::uint32_t> channels{0};  // empty: all that the calibration knows
  std::vector<std::int32_t> exposures{};   // in microseconds; empty: the one that the head has, or a series about it
  std::size_t seriesLength = 0;            // of exposures about the head's; 0: none
  std::optional<Region> roi{};
  bool generated = false;
};

// Throw Failure when the calibration cannot be that of the head, or of the pictures.
ScanTask taskOfHead(const Device& head, const std::string& address, const ScanWishes& wishes);
ScanTask taskOfFolder(const std::string& folder, const ScanWishes& wishes);

// Where the pictures come from.
using PictureSource = std::function<void(const PictureSink&)>;

// Decodes what comes and compares it with the truth. Throws Failure when the calibration is not that of the pictures, or no pixel gives
// a point.
ScanResult compute(ScanTask task, Steps& steps, const PictureSource& source);

// Where a camera's pinhole is in the reference frame.
Place pinholeOf(const SLScanOptics& camera);

// The points of each pixel, from the pinhole of the camera that saw them.
std::vector<float> seenFromCameras(const ScanResult& result);

}  // namespace fringix::tool
