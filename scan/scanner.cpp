#include "scanner.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "failure.h"
#include "normals.h"
#include "parallel.h"

namespace fringix::scan {

namespace {

const Calibration& checked(const Calibration& calibration) {
  check(calibration);
  return calibration;
}

std::size_t pixelCount(const Optics& camera) { return static_cast<std::size_t>(camera.width) * static_cast<std::size_t>(camera.height); }

// One strip's results on their way to the caller's buffers.
void write(const DecodedStrip& decoded, const PointStrip& points, const LevelSums& levels, const Cloud& cloud, std::size_t start,
           std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    cloud.points[3 * (start + i)] = points.x[i];
    cloud.points[3 * (start + i) + 1] = points.y[i];
    cloud.points[3 * (start + i) + 2] = points.z[i];
  }
  const auto copy = [&](const auto& strip, auto* to) {
    if (to != nullptr) std::copy_n(strip.begin(), count, to + start);
  };
  copy(points.sigma, cloud.sigma);
  copy(levels.white, cloud.intensity);
  copy(decoded.reason, cloud.reason);
  copy(decoded.column, cloud.column);
  copy(decoded.modulation, cloud.modulation);
  copy(decoded.offset, cloud.offset);
}

}  // namespace

// One camera's pictures on their way to points.
class Scanner::Run {
 public:
  Run(const Scanner& scanner, std::size_t camera, const Cloud& cloud)
      : scanner_(scanner),
        optics_(scanner.calibration_.cameras[camera]),
        triangulator_(scanner.triangulators_[camera]),
        pixels_(pixelCount(optics_)),
        cloud_(cloud) {
    if (cloud_.points == nullptr) throw Failure(Status::badParameter, "the buffer of the points is null");
    if (cloud_.sigma == nullptr) cloud_.sigma = sigma_.emplace(pixels_).data();
    if (cloud_.reason == nullptr) cloud_.reason = reason_.emplace(pixels_).data();
  }

  // The recipe.
  Findings from(std::span<const std::uint8_t* const> pictures) {
    inParallel(threads(), batches(), [&](std::size_t batch) { makePoints(batch, pictures); });
    return finish();
  }
  Findings from(Accumulator& accumulator) {
    inParallel(threads(), batches(), [&](std::size_t batch) {
      makePoints(batch, accumulator.batch(batch));
      accumulator.giveUp(batch);
    });
    totals_ = accumulator.totals();
    return finish();
  }

 private:
  std::size_t threads() const { return scanner_.settings_.threads; }
  std::size_t batches() const { return (stripsOf(pixels_) + Accumulator::batchStrips - 1) / Accumulator::batchStrips; }
  std::size_t firstOf(std::size_t batch) const { return batch * Accumulator::batchStrips; }
  std::size_t endOf(std::size_t batch) const { return std::min(firstOf(batch) + Accumulator::batchStrips, stripsOf(pixels_)); }

  Findings finish() {
    const Findings decoded = findings();
    if (decoded.counts[0] == 0) return decoded;
    const double spacing = 1 / optics_.fx;
    const Vector pinhole = transposed(optics_.rotation) * (-1.0 * optics_.translation);
    const auto width = static_cast<std::size_t>(optics_.width);
    const auto height = static_cast<std::size_t>(optics_.height);
    const CleanLimits& limits = scanner_.settings_.clean;
    clean({cloud_.points, cloud_.sigma, cloud_.reason, width, height, pinhole, spacing}, limits, threads());
    if (cloud_.normals != nullptr) normals(cloud_.points, width, height, pinhole, spacing, cloud_.normals, threads());
    return limits.on ? findings() : decoded;
  }

  // Each strip goes the whole way while it is in the processor's caches.
  void makePoints(std::size_t batch, std::span<const std::uint8_t* const> pictures) {
    SumsOfStrips sums(scanner_.plan_, 1);
    Strip<std::uint8_t> copy;
    Scatter scatter;
    std::vector<std::uint64_t> totals(pictures.size(), 0);
    for (std::size_t strip = firstOf(batch); strip < endOf(batch); ++strip) {
      sums.clear();
      for (std::size_t i = 0; i < pictures.size(); ++i) {
        totals[i] += scan::add(scanner_.plan_.pictures()[i], pixelsOfStrip(pictures[i], strip, copy), sums[0]);
      }
      makePoints(strip, sums[0], scatter);
    }
    collect(scatter, totals);
  }

  void makePoints(std::size_t batch, SumsOfStrips& sums) {
    Scatter scatter;
    for (std::size_t strip = firstOf(batch); strip < endOf(batch); ++strip) makePoints(strip, sums[strip - firstOf(batch)], scatter);
    collect(scatter, {});
  }

  void makePoints(std::size_t strip, const StripSums& sums, Scatter& scatter) {
    DecodedStrip decoded;
    PointStrip points;
    scanner_.decoder_.decode(sums, decoded);
    triangulator_.triangulate(strip, decoded, points);
    const std::size_t start = strip * stripLength;
    const std::size_t count = std::min(stripLength, pixels_ - start);
    write(decoded, points, sums.levels, cloud_, start, count);
    scatter.add(decoded, count);
  }

  const std::uint8_t* pixelsOfStrip(const std::uint8_t* picture, std::size_t strip, Strip<std::uint8_t>& copy) const {
    return scan::pixelsOf(picture, pixels_, strip, copy);
  }

  // Whole numbers only, so that the order in which threads come makes no difference.
  void collect(const Scatter& scatter, const std::vector<std::uint64_t>& totals) {
    const std::lock_guard lock(mutex_);
    scatter_.add(scatter);
    totals_.resize(std::max(totals_.size(), totals.size()), 0);
    for (std::size_t i = 0; i < totals.size(); ++i) totals_[i] += totals[i];
  }

  Findings findings() const {
    std::vector<Counts> counts(batches());
    inParallel(threads(), counts.size(), [&](std::size_t batch) {
      const std::size_t start = firstOf(batch) * stripLength;
      counts[batch].add(cloud_.reason + start, cloud_.sigma + start, std::min(endOf(batch) * stripLength, pixels_) - start);
    });
    Counts all;
    for (const Counts& some : counts) all.add(some);
    const auto steps = static_cast<std::ptrdiff_t>(scanner_.plan_.settings().steps);
    return findingsOf(all, scatter_, scanner_.decoder_.freedom(), totals_[1], {totals_.end() - steps, totals_.end()});
  }

  const Scanner& scanner_;
  const Optics& optics_;
  const Triangulator& triangulator_;
  std::size_t pixels_;
  Cloud cloud_;
  std::optional<std::vector<float>> sigma_;
  std::optional<std::vector<std::uint8_t>> reason_;
  std::mutex mutex_;
  Scatter scatter_;
  std::vector<std::uint64_t> totals_;
};

Scanner::Scanner(const PlanSettings& plan, const Calibration& calibration, const ScanSettings& settings)
    : plan_(plan), calibration_(checked(calibration)), settings_(settings), decoder_(plan_, settings.decode) {
  if (settings.threads < 1 || settings.threads > 256) throw Failure(Status::badParameter, "settings: 1 to 256 threads are possible");
  check(settings.clean);
  if (plan.projectorWidth != calibration.projector.width) {
    throw Failure(Status::badParameter, "the plan is for a projector of " + std::to_string(plan.projectorWidth) +
                                            " columns, the calibration for one of " + std::to_string(calibration.projector.width));
  }
  for (std::size_t i = 0; i < calibration_.cameras.size(); ++i) {
    triangulators_.emplace_back(calibration_, i, settings.triangulation, settings.threads);
  }
  accumulators_.resize(calibration_.cameras.size());
}

void Scanner::requireCamera(std::size_t camera) const {
  if (camera >= calibration_.cameras.size()) {
    throw Failure(Status::badParameter,
                  "there is no camera " + std::to_string(camera) + "; the calibration has " + std::to_string(calibration_.cameras.size()));
  }
}

Findings Scanner::compute(std::size_t camera, std::span<const std::uint8_t* const> pictures, const Cloud& cloud) {
  requireCamera(camera);
  if (pictures.size() != plan_.pictures().size()) {
    throw Failure(Status::badPictures,
                  std::to_string(pictures.size()) + " pictures were given; the plan has " + std::to_string(plan_.pictures().size()));
  }
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    if (pictures[i] == nullptr) throw Failure(Status::badPictures, "picture " + std::to_string(i) + " is missing");
  }
  return Run(*this, camera, cloud).from(pictures);
}

void Scanner::add(std::size_t camera, const std::uint8_t* picture) {
  requireCamera(camera);
  auto& accumulator = accumulators_[camera];
  if (accumulator == nullptr) {
    accumulator = std::make_unique<Accumulator>(plan_, pixelCount(calibration_.cameras[camera]), settings_.threads);
  }
  accumulator->add(picture);
}

Findings Scanner::finish(std::size_t camera, const Cloud& cloud) {
  requireCamera(camera);
  const std::size_t taken = accumulators_[camera] == nullptr ? 0 : accumulators_[camera]->taken();
  if (taken < plan_.pictures().size()) {
    throw Failure(Status::badPictures,
                  "picture " + std::to_string(taken) + " is missing; the plan has " + std::to_string(plan_.pictures().size()));
  }
  Run run(*this, camera, cloud);
  const auto accumulator = std::move(accumulators_[camera]);
  return run.from(*accumulator);
}

void Scanner::forget(std::size_t camera) {
  requireCamera(camera);
  accumulators_[camera].reset();
}

}  // namespace fringix::scan
