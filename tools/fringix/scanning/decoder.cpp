#include "scanning/decoder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "scanning/generated_patterns.h"

namespace fringix::tool {
namespace {

std::size_t pixelsOf(const Region& region) { return std::size_t{region.width} * region.height; }

scan::Scanner makeScanner(const SLScanPlan& plan, const SLScanCalibration& calibration, const SLScanSettings& settings, std::int32_t camera,
                          const Region& part) {
  scan::Scanner scanner(plan, calibration, settings);
  const SLScanOptics& optics = calibration.cameras[camera];
  if (!std::cmp_equal(part.width, optics.width) || !std::cmp_equal(part.height, optics.height)) {
    scanner.useWindow(camera, static_cast<std::int32_t>(part.x), static_cast<std::int32_t>(part.y), static_cast<std::int32_t>(part.width),
                      static_cast<std::int32_t>(part.height));
  }
  return scanner;
}

template <class Value>
void cutRows(const std::vector<Value>& from, const Region& region, const Region& part, std::size_t each, std::vector<Value>& to) {
  to.clear();
  for (std::size_t row = part.y - region.y; row < part.y - region.y + part.height; ++row) {
    const auto first = from.begin() + static_cast<std::ptrdiff_t>((row * region.width + part.x - region.x) * each);
    to.insert(to.end(), first, first + static_cast<std::ptrdiff_t>(part.width * each));
  }
}

double squaresOf(const SLScanFindings& findings) {
  return findings.expectedSigma * findings.expectedSigma * static_cast<double>(findings.counts[SLSCAN_POINT]);
}

double rootOfMean(double squares, std::uint64_t count) { return count == 0 ? 0 : std::sqrt(squares / static_cast<double>(count)); }

void countAnew(scan::Cloud& cloud) {
  std::fill(std::begin(cloud.findings.counts), std::end(cloud.findings.counts), 0);
  double squares = 0;
  for (std::size_t i = 0; i < cloud.pixels(); ++i) {
    ++cloud.findings.counts[cloud.reason[i]];
    if (cloud.reason[i] == SLSCAN_POINT) squares += double{cloud.sigma[i]} * cloud.sigma[i];
  }
  cloud.findings.expectedSigma = rootOfMean(squares, cloud.findings.counts[SLSCAN_POINT]);
}

void append(SLScanFindings& all, const SLScanFindings& more) {
  const double squares = squaresOf(all) + squaresOf(more);
  for (std::size_t i = 0; i < SLSCAN_REASONS; ++i) all.counts[i] += more.counts[i];
  all.expectedSigma = rootOfMean(squares, all.counts[SLSCAN_POINT]);
  all.measuredNoise = std::max(all.measuredNoise, more.measuredNoise);
  all.flicker = std::max(all.flicker, more.flicker);
  all.flickers = std::max(all.flickers, more.flickers);
  all.moves = std::max(all.moves, more.moves);
}

template <class Value>
void append(std::vector<Value>& all, const std::vector<Value>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

Decoder::Decoder(const ScanTask& task, std::uint32_t camera)
    : camera_(static_cast<std::int32_t>(camera)),
      needed_(neededRegion(task)),
      wanted_(wantedRegion(task)),
      picturesOfExposure_(task.picturesOfExposure()) {
  SLScanCalibration calibration = task.generated ? forGeneratedPatterns(task.calibration) : task.calibration;
  calibration.cameraCount = camera_ + 1;  // a scanner has tables for each of them
  making_ = std::async(std::launch::async, makeScanner, task.plan, calibration, task.settings, camera_, needed_);
}

const scan::Scanner& Decoder::scanner() {
  if (!scanner_) scanner_.emplace(making_.get());
  return *scanner_;
}

void Decoder::take(Image picture) {
  if (adding_.valid()) adding_.get();
  const bool startsExposure = taken_ > 0 && taken_ % picturesOfExposure_ == 0;
  ++taken_;
  adding_ = std::async(std::launch::async, [this, startsExposure, picture = std::move(picture)] {
    if (startsExposure) scanner().nextExposure(camera_);
    scanner().add(camera_, picture.pixels.data(), static_cast<std::int32_t>(picture.width), static_cast<std::int32_t>(picture.height));
  });
}

Decoded Decoder::finish() {
  if (adding_.valid()) adding_.get();
  Decoded decoded{scan::Cloud(pixelsOf(needed_), true), std::vector<float>(pixelsOf(needed_))};
  SLScanCloud buffers = decoded.cloud.buffers();
  buffers.modulation = decoded.modulation.data();
  scan::check(SLScanFinish(scanner().handle(), camera_, &buffers, &decoded.cloud.findings));
  return pixelsOf(needed_) == pixelsOf(wanted_) ? std::move(decoded) : cut(decoded, needed_, wanted_);
}

Decoded cut(const Decoded& decoded, const Region& region, const Region& part) {
  Decoded inner;
  cutRows(decoded.cloud.points, region, part, 3, inner.cloud.points);
  cutRows(decoded.cloud.normals, region, part, 3, inner.cloud.normals);
  cutRows(decoded.cloud.sigma, region, part, 1, inner.cloud.sigma);
  cutRows(decoded.cloud.intensity, region, part, 1, inner.cloud.intensity);
  cutRows(decoded.cloud.reason, region, part, 1, inner.cloud.reason);
  cutRows(decoded.modulation, region, part, 1, inner.modulation);
  inner.cloud.findings = decoded.cloud.findings;
  countAnew(inner.cloud);
  return inner;
}

void append(Decoded& all, const Decoded& more) {
  append(all.cloud.points, more.cloud.points);
  append(all.cloud.normals, more.cloud.normals);
  append(all.cloud.sigma, more.cloud.sigma);
  append(all.cloud.intensity, more.cloud.intensity);
  append(all.cloud.reason, more.cloud.reason);
  append(all.modulation, more.modulation);
  append(all.cloud.findings, more.cloud.findings);
}

}  // namespace fringix::tool
