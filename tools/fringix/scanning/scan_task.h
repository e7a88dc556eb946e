// What a scan is to do, and what it is made with.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <optional>
#include <string>
#include <vector>

namespace fringix::tool {

struct ScanTask {
  SLScanPlan plan{};
  bool generated = false;  // the patterns are those of the head's own generators
  SLScanSettings settings{};
  std::vector<std::uint32_t> channels{0};
  std::vector<std::int32_t> exposures{};  // in microseconds, as the head counts them; empty: the one that it has
  std::optional<Region> roi{};            // the part of the pictures of which points are wanted; all of them without
  std::string calibrationText;
  SLScanCalibration calibration{};      // what the text says
  std::vector<std::string> cautions{};  // what is odd and does not hinder
  std::string truthText;                // empty: nobody asked for it

  std::size_t exposureCount() const { return std::max<std::size_t>(exposures.size(), 1); }
  std::size_t picturesOfExposure() const { return static_cast<std::size_t>(scan::pictureCount(plan)); }  // of each camera
};

inline bool isSame(Size one, Size other) { return one.width == other.width && one.height == other.height; }
inline bool isSame(const Region& one, const Region& other) {
  return one.x == other.x && one.y == other.y && one.width == other.width && one.height == other.height;
}

// The cameras of a head have pictures of one size.
Size cameraSizeOf(const ScanTask& task);
Region wantedRegion(const ScanTask& task);

// What the pictures have to show for that: cleaning and normals look at the pixels around a point, too.
Region neededRegion(const ScanTask& task);

// Throws Failure unless it lies within the pictures.
void requireRegion(const ScanTask& task);

}  // namespace fringix::tool
