#include "triangulate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "failure.h"
#include "parallel.h"

namespace fringix::scan {

namespace {

// Newton's method doubles the number of right digits with each step; a lens bends by some per cent.
constexpr int newtonSteps = 3;
constexpr float rowTolerance = 2;  // in rows of the projector

void check(const TriangulationLimits& limits) {
  if (!(limits.sigma > 0)) throw Failure(Status::badParameter, "settings: the largest sigma has to be above 0 mm");
  if (!(limits.nearest >= 0 && limits.farthest > limits.nearest)) {
    throw Failure(Status::badParameter, "settings: the nearest depth has to be 0 mm or more and below the farthest");
  }
}

std::array<float, 3> toFloat(const Vector& v) { return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])}; }

std::array<std::array<float, 3>, 3> toFloat(const Matrix& m) { return {toFloat(m[0]), toFloat(m[1]), toFloat(m[2])}; }

}  // namespace

// The camera's rays in the projector's frame: seenFrom_ + s * (x, y, z).
struct Triangulator::Rays {
  Strip<float> x;
  Strip<float> y;
  Strip<float> z;
};

// Where the light comes from in the projector's picture, normalised and without distortion. A ray shows there as the line
// y = slope * x + start.
struct Triangulator::Columns {
  Strip<float> slope;
  Strip<float> start;
  Strip<float> x;
  Strip<float> gain;   // what distortion makes of a small step in x along the line
  Strip<float> shown;  // the normalised row, with distortion
};

Triangulator::Triangulator(const Calibration& calibration, std::size_t camera, const Window& window, const TriangulationLimits& limits,
                           std::size_t threads)
    : projector_(calibration.projector), limits_(limits), window_(window) {
  check(limits);
  const Optics& optics = calibration.cameras.at(camera);
  toReference_ = transposed(optics.rotation);
  pinhole_ = toReference_ * (-1.0 * optics.translation);
  toProjector_ = projector_.rotation * toReference_;
  seenFrom_ = projector_.rotation * pinhole_ + projector_.translation;
  const std::size_t padded = stripsOf(window.pixels()) * stripLength;
  rayX_.resize(padded);
  rayY_.resize(padded);
  inParallel(threads, static_cast<std::size_t>(window.height), [&](std::size_t row) { makeRays(optics, static_cast<std::int32_t>(row)); });
}

// Each search starts from the neighbour's result, and the first one at the picture's border, so that a window has the very rays that the
// whole picture has there.
void Triangulator::makeRays(const Optics& camera, std::int32_t row) {
  Place place = camera.normalised(0, row + window_.y);
  Place before = place;
  const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(row) * window_.width - window_.x;
  for (std::int32_t column = 0; column < window_.x + window_.width; ++column) {
    const Place shown = camera.normalised(column, row + window_.y);
    place = undistort(camera.distortion, shown, {place.x + shown.x - before.x, place.y});
    before = shown;
    if (column < window_.x) continue;
    rayX_[static_cast<std::size_t>(start + column)] = static_cast<float>(place.x);
    rayY_[static_cast<std::size_t>(start + column)] = static_cast<float>(place.y);
  }
}

FRINGIX_STRIP_LOOPS void Triangulator::triangulate(std::size_t strip, DecodedStrip& decoded, PointStrip& points) const {
  Rays rays;
  Columns columns;
  turnRays(strip, rays);
  straighten(decoded, rays, columns);
  for (int step = 0; step < newtonSteps; ++step) improve(decoded, columns);
  intersect(rays, columns, decoded, points);
  leaveCamera(strip, decoded, points);
}

void Triangulator::turnRays(std::size_t strip, Rays& rays) const {
  const auto turn = toFloat(toProjector_);
  const float* const x = &rayX_[strip * stripLength];
  const float* const y = &rayY_[strip * stripLength];
  for (std::size_t i = 0; i < stripLength; ++i) rays.x[i] = turn[0][0] * x[i] + turn[0][1] * y[i] + turn[0][2];
  for (std::size_t i = 0; i < stripLength; ++i) rays.y[i] = turn[1][0] * x[i] + turn[1][1] * y[i] + turn[1][2];
  for (std::size_t i = 0; i < stripLength; ++i) rays.z[i] = turn[2][0] * x[i] + turn[2][1] * y[i] + turn[2][2];
}

// The line is the plane through ray and projector, which has the normal seenFrom_ x ray.
void Triangulator::straighten(const DecodedStrip& decoded, const Rays& rays, Columns& columns) const {
  const auto from = toFloat(seenFrom_);
  const auto focal = static_cast<float>(1 / projector_.fx);
  const auto centre = static_cast<float>(projector_.cx);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float normalX = from[1] * rays.z[i] - from[2] * rays.y[i];
    const float normalY = from[2] * rays.x[i] - from[0] * rays.z[i];
    const float normalZ = from[0] * rays.y[i] - from[1] * rays.x[i];
    const float scale = -1.0F / normalY;
    columns.slope[i] = scale * normalX;
    columns.start[i] = scale * normalZ;
    columns.x[i] = (decoded.column[i] - centre) * focal;
  }
}

// Behind a lens a column is no plane: the place on the ray's line that is shown in the column is searched for, with one unknown.
void Triangulator::improve(const DecodedStrip& decoded, Columns& columns) const {
  const auto k1 = static_cast<float>(projector_.distortion.k1);
  const auto k2 = static_cast<float>(projector_.distortion.k2);
  const auto k3 = static_cast<float>(projector_.distortion.k3);
  const auto p1 = static_cast<float>(projector_.distortion.p1);
  const auto p2 = static_cast<float>(projector_.distortion.p2);
  const auto focal = static_cast<float>(1 / projector_.fx);
  const auto centre = static_cast<float>(projector_.cx);
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float x = columns.x[i];
    const float slope = columns.slope[i];
    const float y = slope * x + columns.start[i];
    const float square = x * x + y * y;
    const float growth = 2 * (x + slope * y);
    const float radial = 1 + square * (k1 + square * (k2 + square * k3));
    const float radialGrowth = growth * (k1 + square * (2 * k2 + square * 3 * k3));
    const float shown = x * radial + 2 * p1 * x * y + p2 * (square + 2 * x * x);
    const float gain = radial + x * radialGrowth + 2 * p1 * (y + slope * x) + p2 * (growth + 4 * x);
    columns.gain[i] = gain;
    columns.shown[i] = y * radial + p1 * (square + 2 * y * y) + 2 * p2 * x * y;
    columns.x[i] = x - (shown - (decoded.column[i] - centre) * focal) / gain;
  }
}

// Where the ray has x / z as the column has.
void Triangulator::intersect(const Rays& rays, const Columns& columns, DecodedStrip& decoded, PointStrip& points) const {
  const auto from = toFloat(seenFrom_);
  const auto nearest = static_cast<float>(limits_.nearest);
  const auto farthest = static_cast<float>(limits_.farthest);
  const auto focalY = static_cast<float>(projector_.fy);
  const auto firstRow = static_cast<float>(-0.5 - projector_.cy) - rowTolerance;
  const auto lastRow = static_cast<float>(projector_.height - 0.5 - projector_.cy) + rowTolerance;
  const auto columnWidth = static_cast<float>(1 / projector_.fx);
  Strip<std::int32_t> lit;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float x = columns.x[i];
    const float share = 1.0F / (rays.x[i] - x * rays.z[i]);
    const float depth = (x * from[2] - from[0]) * share;
    const float row = columns.shown[i] * focalY;
    const float growth = (from[2] * rays.x[i] - from[0] * rays.z[i]) * share * share;
    const float step = growth * columnWidth / columns.gain[i];
    points.z[i] = depth;
    points.sigma[i] = std::sqrt(decoded.variance[i] * step * step);
    lit[i] = (depth > nearest) & (depth < farthest) & (from[2] + depth * rays.z[i] > 0) & (row > firstRow) & (row < lastRow);
  }
  constexpr auto geometry = static_cast<std::uint8_t>(Reason::geometry);
  for (std::size_t i = 0; i < stripLength; ++i) {
    decoded.reason[i] = (decoded.reason[i] == 0) & (lit[i] == 0) ? geometry : decoded.reason[i];
  }
}

// From depths along the camera's axis to points of the reference frame.
void Triangulator::leaveCamera(std::size_t strip, DecodedStrip& decoded, PointStrip& points) const {
  const auto turn = toFloat(toReference_);
  const auto pinhole = toFloat(pinhole_);
  const float* const rayX = &rayX_[strip * stripLength];
  const float* const rayY = &rayY_[strip * stripLength];
  const auto limit = static_cast<float>(limits_.sigma);
  constexpr float none = std::numeric_limits<float>::quiet_NaN();
  Strip<std::int32_t> reason;
  for (std::size_t i = 0; i < stripLength; ++i) {
    const float x = rayX[i];
    const float y = rayY[i];
    const float sigma = points.sigma[i] * std::sqrt(1 + x * x + y * y);
    const std::int32_t before = decoded.reason[i];
    const std::int32_t now = (before == 0) & !(sigma <= limit) ? static_cast<std::int32_t>(Reason::noise) : before;
    const float depth = now == 0 ? points.z[i] : none;
    reason[i] = now;
    points.sigma[i] = now == 0 ? sigma : none;
    points.x[i] = pinhole[0] + depth * (turn[0][0] * x + turn[0][1] * y + turn[0][2]);
    points.y[i] = pinhole[1] + depth * (turn[1][0] * x + turn[1][1] * y + turn[1][2]);
    points.z[i] = pinhole[2] + depth * (turn[2][0] * x + turn[2][1] * y + turn[2][2]);
  }
  for (std::size_t i = 0; i < stripLength; ++i) decoded.reason[i] = static_cast<std::uint8_t>(reason[i]);
}

}  // namespace fringix::scan
