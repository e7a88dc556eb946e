#include "scanner.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "conditions.h"
#include "exposures.h"
#include "failure.h"
#include "normals.h"
#include "parallel.h"

namespace fringix::scan {

namespace {

const Calibration& checked(const Calibration& calibration) {
  check(calibration);
  return calibration;
}

constexpr std::size_t mostExposures = 16;

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
        window_(scanner.windows_[camera]),
        pixels_(window_.pixels()),
        cloud_(cloud) {
    if (cloud_.points == nullptr) throw Failure(Status::badParameter, "the buffer of the points is null");
    if (cloud_.sigma == nullptr) cloud_.sigma = sigma_.emplace(pixels_).data();
    if (cloud_.reason == nullptr) cloud_.reason = reason_.emplace(pixels_).data();
  }

  // The recipe.
  Findings from(std::span<const std::uint8_t* const> pictures) {
    std::vector<std::uint64_t> totals(pictures.size());
    decoders_ = {decoderFor(pictures)};
    inParallel(threads(), batches(), [&](std::size_t batch) { makePoints(batch, pictures, totals); });
    noteFlicker(totals);
    return finish();
  }
  Findings from(const Exposures& exposures) {
    for (const auto& exposure : exposures) decoders_.push_back(decoderFor(*exposure));
    inParallel(threads(), batches(), [&](std::size_t batch) {
      makePoints(batch, exposures);
      for (const auto& exposure : exposures) exposure->giveUp(batch);
    });
    for (const auto& exposure : exposures) noteFlicker(exposure->totals());
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
    const auto width = static_cast<std::size_t>(window_.width);
    const auto height = static_cast<std::size_t>(window_.height);
    const CleanLimits& limits = scanner_.settings_.clean;
    clean({cloud_.points, cloud_.sigma, cloud_.reason, width, height, pinhole, spacing}, limits, threads());
    if (cloud_.normals != nullptr) normals(cloud_.points, width, height, pinhole, spacing, cloud_.normals, threads());
    return limits.on ? findings() : decoded;
  }

  // Strips all over the picture, about 64 of them, tell enough. An odd step does not stay in one column.
  template <class SumsOf>
  Decoder decoderAfter(SumsOf sumsOf) const {
    const std::size_t strips = stripsOf(pixels_);
    ConditionSamples samples;
    DecodedStrip decoded;
    for (std::size_t strip = 0; strip < strips; strip += strips / 64 | 1U) {
      const StripSums sums = sumsOf(strip);
      scanner_.decoder_.decode(sums, decoded);
      samples.add(decoded, sums, std::min(stripLength, pixels_ - strip * stripLength));
    }
    return scanner_.decoder_.under(samples.conditions(scanner_.settings_.decode.noise, scanner_.decoder_.freedom()));
  }
  Decoder decoderFor(Accumulator& exposure) const {
    return decoderAfter(
        [&](std::size_t strip) { return exposure.batch(strip / Accumulator::batchStrips)[strip % Accumulator::batchStrips]; });
  }
  Decoder decoderFor(std::span<const std::uint8_t* const> pictures) const {
    SumsOfStrips sums(scanner_.plan_, 1);
    return decoderAfter([&](std::size_t strip) {
      Strip<std::uint8_t> copy;
      sums.clear();
      for (std::size_t i = 0; i < pictures.size(); ++i) {
        scan::add(scanner_.plan_.pictures()[i], pixelsOfStrip(pictures[i], strip, copy), sums[0]);
      }
      return sums[0];
    });
  }

  // Each strip goes the whole way while it is in the processor's caches.
  void makePoints(std::size_t batch, std::span<const std::uint8_t* const> pictures, std::vector<std::uint64_t>& totals) {
    SumsOfStrips sums(scanner_.plan_, 1);
    Strip<std::uint8_t> copy;
    Scatter scatter;
    std::vector<std::uint64_t> added(pictures.size(), 0);
    DecodedStrip decoded;
    for (std::size_t strip = firstOf(batch); strip < endOf(batch); ++strip) {
      sums.clear();
      for (std::size_t i = 0; i < pictures.size(); ++i) {
        added[i] += scan::add(scanner_.plan_.pictures()[i], pixelsOfStrip(pictures[i], strip, copy), sums[0]);
      }
      decoders_[0].decode(sums[0], decoded);
      makePoints(strip, decoded, sums[0].levels, scatter);
    }
    const std::lock_guard lock(mutex_);
    scatter_.add(scatter);
    for (std::size_t i = 0; i < added.size(); ++i) totals[i] += added[i];
  }

  // The grey levels of the white picture are those of the first exposure, so that they can be compared.
  void makePoints(std::size_t batch, const Exposures& exposures) {
    Scatter scatter;
    DecodedStrip decoded;
    DecodedStrip other;
    for (std::size_t i = 0; i < endOf(batch) - firstOf(batch); ++i) {
      decoders_[0].decode(exposures[0]->batch(batch)[i], decoded);
      for (std::size_t exposure = 1; exposure < exposures.size(); ++exposure) {
        decoders_[exposure].decode(exposures[exposure]->batch(batch)[i], other);
        takeBetter(other, decoded);
      }
      makePoints(firstOf(batch) + i, decoded, exposures[0]->batch(batch)[i].levels, scatter);
    }
    const std::lock_guard lock(mutex_);
    scatter_.add(scatter);
  }

  void makePoints(std::size_t strip, DecodedStrip& decoded, const LevelSums& levels, Scatter& scatter) {
    PointStrip points;
    triangulator_.triangulate(strip, decoded, points);
    const std::size_t start = strip * stripLength;
    const std::size_t count = std::min(stripLength, pixels_ - start);
    write(decoded, points, levels, cloud_, start, count);
    scatter.add(decoded, count);
  }

  const std::uint8_t* pixelsOfStrip(const std::uint8_t* picture, std::size_t strip, Strip<std::uint8_t>& copy) const {
    return scan::pixelsOf(picture, pixels_, strip, copy);
  }

  // Of an exposure, from the totals of its pictures' levels.
  void noteFlicker(const std::vector<std::uint64_t>& totals) {
    const auto steps = static_cast<std::ptrdiff_t>(scanner_.plan_.settings().steps);
    flicker_ = std::max(flicker_, flickerOf(totals[1], {totals.end() - steps, totals.end()}));
  }

  Findings findings() const {
    std::vector<Counts> counts(batches());
    inParallel(threads(), counts.size(), [&](std::size_t batch) {
      const std::size_t start = firstOf(batch) * stripLength;
      counts[batch].add(cloud_.reason + start, cloud_.sigma + start, std::min(endOf(batch) * stripLength, pixels_) - start);
    });
    Counts all;
    for (const Counts& some : counts) all.add(some);
    return findingsOf(all, scatter_, scanner_.decoder_.freedom(), flicker_);
  }

  const Scanner& scanner_;
  const Optics& optics_;
  const Triangulator& triangulator_;
  Window window_;
  std::size_t pixels_;
  Cloud cloud_;
  std::vector<Decoder> decoders_;  // of each exposure
  std::optional<std::vector<float>> sigma_;
  std::optional<std::vector<std::uint8_t>> reason_;
  std::mutex mutex_;
  Scatter scatter_;  // counts, so that the order in which threads come makes no difference
  double flicker_ = 0;
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
    windows_.push_back({0, 0, calibration_.cameras[i].width, calibration_.cameras[i].height});
    triangulators_.emplace_back(calibration_, i, windows_[i], settings.triangulation, settings.threads);
  }
  exposures_.resize(calibration_.cameras.size());
}

void Scanner::use(std::size_t camera, const Window& window) {
  requireCamera(camera);
  const Optics& optics = calibration_.cameras[camera];
  if (!window.liesWithin(optics.width, optics.height)) {
    throw Failure(Status::badParameter, "a window of " + std::to_string(window.width) + " x " + std::to_string(window.height) +
                                            " pixels at " + std::to_string(window.x) + ", " + std::to_string(window.y) +
                                            " does not lie within the camera's " + std::to_string(optics.width) + " x " +
                                            std::to_string(optics.height));
  }
  triangulators_[camera] = Triangulator(calibration_, camera, window, settings_.triangulation, settings_.threads);
  windows_[camera] = window;
  exposures_[camera].clear();
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
  Exposures& exposures = exposures_[camera];
  if (exposures.empty()) exposures.push_back(std::make_unique<Accumulator>(plan_, windows_[camera].pixels(), settings_.threads));
  exposures.back()->add(picture);
}

void Scanner::nextExposure(std::size_t camera) {
  requireComplete(camera);
  Exposures& exposures = exposures_[camera];
  if (exposures.size() == mostExposures) throw Failure(Status::badPictures, std::to_string(mostExposures) + " exposures are possible");
  exposures.push_back(std::make_unique<Accumulator>(plan_, windows_[camera].pixels(), settings_.threads));
}

void Scanner::requireComplete(std::size_t camera) const {
  requireCamera(camera);
  const std::size_t taken = exposures_[camera].empty() ? 0 : exposures_[camera].back()->taken();
  if (taken == plan_.pictures().size()) return;
  throw Failure(Status::badPictures,
                "picture " + std::to_string(taken) + " is missing; the plan has " + std::to_string(plan_.pictures().size()));
}

Findings Scanner::finish(std::size_t camera, const Cloud& cloud) {
  requireComplete(camera);
  Run run(*this, camera, cloud);
  const Exposures exposures = std::exchange(exposures_[camera], {});
  return run.from(exposures);
}

void Scanner::forget(std::size_t camera) {
  requireCamera(camera);
  exposures_[camera].clear();
}

}  // namespace fringix::scan
