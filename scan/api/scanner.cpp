#include "scan/scanner.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "export.h"
#include "records.h"

struct SLScanner {
  fringix::scan::Scanner scanner;
};

namespace fringix::scan {

namespace {

ScanSettings settingsFrom(const SLScanSettings& record) {
  ScanSettings settings;
  settings.threads = static_cast<std::size_t>(std::max(record.threads, 0));
  settings.decode = {
      {record.noise, record.noisePerLevel}, record.saturation, record.periodShare, record.grayMargin, record.residual, record.unsteadiness};
  settings.triangulation = {record.sigma, record.nearest, record.farthest};
  settings.clean = {record.clean != 0, record.edgeAngle, record.outlier, record.leastPatch};
  return settings;
}

SLScanSettings recordOf(const ScanSettings& s) {
  return {static_cast<std::int32_t>(s.threads),
          s.decode.saturation,
          s.decode.noise.floor,
          s.decode.noise.variancePerLevel,
          s.decode.periodShare,
          s.decode.grayMargin,
          s.decode.residual,
          s.decode.unsteadiness,
          s.triangulation.sigma,
          s.triangulation.nearest,
          s.triangulation.farthest,
          s.clean.on ? 1 : 0,
          s.clean.leastPatch,
          s.clean.edgeAngle,
          s.clean.outlier};
}

SLScanFindings recordOf(const Findings& findings) {
  static_assert(reasonCount == SLSCAN_REASONS);
  SLScanFindings record = {};
  std::copy(findings.counts.begin(), findings.counts.end(), record.counts);
  record.expectedSigma = findings.expectedSigma;
  record.measuredNoise = findings.measuredNoise;
  record.flicker = findings.flicker;
  record.flickers = findings.flickers ? 1 : 0;
  record.moves = findings.moves ? 1 : 0;
  return record;
}

const Window& windowOf(const SLScanner& scanner, std::int32_t camera) {
  const auto& cameras = scanner.scanner.calibration().cameras;
  if (camera < 0 || static_cast<std::size_t>(camera) >= cameras.size()) {
    throw Failure(Status::badParameter,
                  "there is no camera " + std::to_string(camera) + "; the calibration has " + std::to_string(cameras.size()));
  }
  return scanner.scanner.window(static_cast<std::size_t>(camera));
}

void requireSize(const Window& window, std::int32_t width, std::int32_t height) {
  if (width == window.width && height == window.height) return;
  throw Failure(Status::badPictures, "pictures of " + std::to_string(width) + " x " + std::to_string(height) + " pixels; the camera has " +
                                         std::to_string(window.width) + " x " + std::to_string(window.height));
}

Cloud buffersOf(const SLScanCloud& cloud, const Window& window) {
  if (cloud.pixels < window.pixels()) {
    throw Failure(Status::badParameter, "the buffers have room for " + std::to_string(cloud.pixels) + " pixels; the camera has " +
                                            std::to_string(window.pixels()));
  }
  return {cloud.points, cloud.normals, cloud.sigma, cloud.intensity, cloud.reason, cloud.column, cloud.modulation, cloud.offset};
}

void tell(const Findings& findings, SLScanFindings* record) {
  if (record != nullptr) *record = recordOf(findings);
  if (findings.counts[0] > 0) return;
  const auto most = std::max_element(findings.counts.begin(), findings.counts.end()) - findings.counts.begin();
  throw Failure(Status::badPictures, std::string("no pixel gives a point; most of them have the reason ") +
                                         nameOf(static_cast<Reason>(most)) + ". Do the pictures show the plan's patterns, in its order?");
}

// What a gathered point takes along.
struct Gathering {
  const SLScanCloud& to;
  std::uint64_t next = 0;

  void take(const SLScanCloud& from, std::uint64_t pixel) {
    copy(from.points, to.points, pixel, 3);
    copy(from.normals, to.normals, pixel, 3);
    copy(from.sigma, to.sigma, pixel, 1);
    copy(from.intensity, to.intensity, pixel, 1);
    copy(from.reason, to.reason, pixel, 1);
    copy(from.column, to.column, pixel, 1);
    copy(from.modulation, to.modulation, pixel, 1);
    copy(from.offset, to.offset, pixel, 1);
    ++next;
  }

  template <class Value>
  void copy(const Value* from, Value* values, std::uint64_t pixel, std::uint64_t each) const {
    if (values != nullptr) std::copy_n(from + pixel * each, each, values + next * each);
  }
};

bool isPoint(const SLScanCloud& cloud, std::uint64_t pixel) { return cloud.points[3 * pixel] == cloud.points[3 * pixel]; }

std::uint64_t pointsOf(const SLScanCloud& cloud) {
  std::uint64_t points = 0;
  for (std::uint64_t pixel = 0; pixel < cloud.pixels; ++pixel) points += isPoint(cloud, pixel) ? 1U : 0U;
  return points;
}

void requireBuffers(const SLScanCloud& from, const SLScanCloud& to) {
  const bool there = from.points != nullptr && (to.normals == nullptr || from.normals != nullptr) &&
                     (to.sigma == nullptr || from.sigma != nullptr) && (to.intensity == nullptr || from.intensity != nullptr) &&
                     (to.reason == nullptr || from.reason != nullptr) && (to.column == nullptr || from.column != nullptr) &&
                     (to.modulation == nullptr || from.modulation != nullptr) && (to.offset == nullptr || from.offset != nullptr);
  if (!there) throw Failure(Status::badParameter, "a cloud lacks a buffer that is to be gathered");
}

}  // namespace

}  // namespace fringix::scan

using namespace fringix::scan;

extern "C" {

int32_t SLScanSettingsDefaults(SLScanSettings* settings) {
  return guarded([&] {
    requireNotNull({settings});
    *settings = recordOf(ScanSettings{});
  });
}

int32_t SLScannerAlloc(const SLScanPlan* plan, const SLScanCalibration* calibration, const SLScanSettings* settings, SLScanner** scanner) {
  return guarded([&] {
    requireNotNull({scanner});
    *scanner = nullptr;
    requireNotNull({plan, calibration, settings});
    *scanner = new SLScanner{{planFrom(*plan), fringix::scan::calibrationFrom(*calibration), settingsFrom(*settings)}};
  });
}

int32_t SLScannerFree(SLScanner* scanner) {
  delete scanner;
  return SLSCAN_OKAY;
}

int32_t SLScanCompute(SLScanner* scanner, int32_t camera, const uint8_t* const* pictures, int32_t count, int32_t width, int32_t height,
                      const SLScanCloud* cloud, SLScanFindings* findings) {
  return guarded([&] {
    requireNotNull({scanner, pictures, cloud});
    const Window& window = windowOf(*scanner, camera);
    requireSize(window, width, height);
    const std::span all(pictures, static_cast<std::size_t>(std::max(count, 0)));
    tell(scanner->scanner.compute(static_cast<std::size_t>(camera), all, buffersOf(*cloud, window)), findings);
  });
}

int32_t SLScanAddPicture(SLScanner* scanner, int32_t camera, const uint8_t* picture, int32_t width, int32_t height) {
  return guarded([&] {
    requireNotNull({scanner, picture});
    requireSize(windowOf(*scanner, camera), width, height);
    scanner->scanner.add(static_cast<std::size_t>(camera), picture);
  });
}

int32_t SLScanFinish(SLScanner* scanner, int32_t camera, const SLScanCloud* cloud, SLScanFindings* findings) {
  return guarded([&] {
    requireNotNull({scanner, cloud});
    const Cloud buffers = buffersOf(*cloud, windowOf(*scanner, camera));
    tell(scanner->scanner.finish(static_cast<std::size_t>(camera), buffers), findings);
  });
}

int32_t SLScanForget(SLScanner* scanner, int32_t camera) {
  return guarded([&] {
    requireNotNull({scanner});
    windowOf(*scanner, camera);
    scanner->scanner.forget(static_cast<std::size_t>(camera));
  });
}

int32_t SLScanNextExposure(SLScanner* scanner, int32_t camera) {
  return guarded([&] {
    requireNotNull({scanner});
    windowOf(*scanner, camera);
    scanner->scanner.nextExposure(static_cast<std::size_t>(camera));
  });
}

int32_t SLScanUseWindow(SLScanner* scanner, int32_t camera, int32_t x, int32_t y, int32_t width, int32_t height) {
  return guarded([&] {
    requireNotNull({scanner});
    windowOf(*scanner, camera);
    scanner->scanner.use(static_cast<std::size_t>(camera), {x, y, width, height});
  });
}

int32_t SLScanGather(const SLScanCloud* clouds, int32_t count, const SLScanCloud* gathered, uint64_t* points) {
  return guarded([&] {
    requireNotNull({clouds, gathered, points});
    *points = 0;
    for (std::int32_t i = 0; i < count; ++i) requireBuffers(clouds[i], *gathered);
    for (std::int32_t i = 0; i < count; ++i) *points += pointsOf(clouds[i]);
    if (*points > gathered->pixels) {
      throw Failure(Status::badParameter, std::to_string(*points) + " points; there is room for " + std::to_string(gathered->pixels));
    }
    Gathering gathering{*gathered};
    for (std::int32_t i = 0; i < count; ++i) {
      for (std::uint64_t pixel = 0; pixel < clouds[i].pixels; ++pixel) {
        if (isPoint(clouds[i], pixel)) gathering.take(clouds[i], pixel);
      }
    }
  });
}
}
