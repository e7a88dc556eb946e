#include "clean.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "failure.h"
#include "parallel.h"
#include "patches.h"
#include "point_rows.h"
#include "strip.h"

namespace fringix::scan {

namespace {

constexpr std::size_t bandRows = 16;
constexpr float noNumber = std::numeric_limits<float>::quiet_NaN();

// Limits as squares, so that no root is needed: spacing is the square of what lies between neighbours at distance 1.
struct Squares {
  float step;        // of a depth step at distance 1
  float stepNoise;   // in variances of the points
  float bulge;       // what a curved surface may stand out at distance 1
  float bulgeNoise;  // in variances of the points
  bool edges;
  bool outliers;
};

Squares squaresOf(const Surface& surface, const CleanLimits& limits) {
  constexpr double stepDeviations = 5;
  constexpr double bulgeShare = 0.05;  // of the spacing
  const double cosine = std::max(std::cos(limits.edgeAngle * std::numbers::pi / 180), 1e-6);
  const auto square = [](double value) { return static_cast<float>(value * value); };
  return {square(surface.spacing / cosine), square(stepDeviations), square(surface.spacing * bulgeShare), square(limits.outlier) * 1.5F,
          limits.edgeAngle<90, limits.outlier> 0};
}

// Goes down a band of rows and marks what is to be taken away. All is judged by the cloud as it came.
class Band {
 public:
  Band(const Surface& surface, const Squares& squares, std::size_t first)
      : surface_(surface),
        squares_(squares),
        row_(first),
        window_(surface.points, surface.width, surface.height, 1, first),
        range_(surface.width),
        marked_(surface.width) {}

  void mark(std::uint8_t* marks, std::size_t end) {
    for (; row_ < end; ++row_) {
      markRow(marks + row_ * surface_.width);
      window_.moveDown();
    }
  }

 private:
  void markRow(std::uint8_t* marks) {
    measureRange();
    const float* const sigma = surface_.sigma + row_ * surface_.width;
    if (squares_.outliers) markOutliers(sigma);
    if (squares_.edges) {
      for (const std::ptrdiff_t offset : {-1, 1}) markSteps(window_[offset], 0, sigma);
      for (const std::ptrdiff_t offset : {-1, 1}) markSteps(window_[0], offset, sigma);
    }
    for (std::size_t i = 0; i < surface_.width; ++i) marks[i] = static_cast<std::uint8_t>(marked_[i]);
  }

  // Squares of distances from the camera.
  void measureRange() {
    const PointRow& row = window_[0];
    const auto pinholeX = static_cast<float>(surface_.pinhole[0]);
    const auto pinholeY = static_cast<float>(surface_.pinhole[1]);
    const auto pinholeZ = static_cast<float>(surface_.pinhole[2]);
    for (std::size_t i = 0; i < surface_.width; ++i) {
      const float x = row.x()[i] - pinholeX;
      const float y = row.y()[i] - pinholeY;
      const float z = row.z()[i] - pinholeZ;
      range_[i] = x * x + y * y + z * z;
      marked_[i] = 0;
    }
  }

  void markSteps(const PointRow& others, std::ptrdiff_t offset, const float* sigma) {
    const PointRow& row = window_[0];
    const float *const x = row.x(), *const y = row.y(), *const z = row.z();
    const float *const otherX = others.x() + offset, *const otherY = others.y() + offset, *const otherZ = others.z() + offset;
    for (std::size_t i = 0; i < surface_.width; ++i) {
      const float dx = otherX[i] - x[i];
      const float dy = otherY[i] - y[i];
      const float dz = otherZ[i] - z[i];
      const float limit = squares_.step * range_[i] + squares_.stepNoise * sigma[i] * sigma[i];
      const bool far = dx * dx + dy * dy + dz * dz > limit;
      marked_[i] = far ? static_cast<std::int32_t>(Reason::edge) : marked_[i];
    }
  }

  // A crease stands out in one direction, an outlier in both.
  void markOutliers(const float* sigma) {
    for (std::size_t i = 0; i < surface_.width; ++i) {
      const float limit = squares_.bulge * range_[i] + squares_.bulgeNoise * sigma[i] * sigma[i];
      const bool out = (bulge(window_[0], -1, window_[0], 1, i) > limit) & (bulge(window_[-1], 0, window_[1], 0, i) > limit);
      marked_[i] = out ? static_cast<std::int32_t>(Reason::outlier) : 0;
    }
  }

  // Square of the distance from the middle between two neighbours.
  float bulge(const PointRow& one, std::ptrdiff_t oneOffset, const PointRow& other, std::ptrdiff_t otherOffset, std::size_t i) const {
    const auto place = static_cast<std::ptrdiff_t>(i);
    const PointRow& row = window_[0];
    const float x = row.x()[i] - 0.5F * (one.x()[place + oneOffset] + other.x()[place + otherOffset]);
    const float y = row.y()[i] - 0.5F * (one.y()[place + oneOffset] + other.y()[place + otherOffset]);
    const float z = row.z()[i] - 0.5F * (one.z()[place + oneOffset] + other.z()[place + otherOffset]);
    return x * x + y * y + z * z;
  }

  const Surface& surface_;
  const Squares& squares_;
  std::size_t row_;
  RowWindow window_;
  std::vector<float> range_;
  std::vector<std::int32_t> marked_;
};

void takeAway(const Surface& surface, std::size_t pixel, std::uint8_t reason) {
  surface.reason[pixel] = reason;
  surface.sigma[pixel] = noNumber;
  std::fill_n(surface.points + 3 * pixel, 3, noNumber);
}

void takeMarkedAway(const Surface& surface, const std::vector<std::uint8_t>& marks, std::size_t first, std::size_t end) {
  for (std::size_t pixel = first; pixel < end; ++pixel) {
    if (marks[pixel] != 0) takeAway(surface, pixel, marks[pixel]);
  }
}

void takeSingleOnesAway(const Surface& surface, const CleanLimits& limits, std::size_t threads) {
  const Squares squares = squaresOf(surface, limits);
  const std::size_t bands = (surface.height + bandRows - 1) / bandRows;
  const auto endOf = [&](std::size_t band) { return std::min((band + 1) * bandRows, surface.height); };
  std::vector<std::uint8_t> marks(surface.width * surface.height);
  inParallel(threads, bands, [&](std::size_t band) { Band(surface, squares, band * bandRows).mark(marks.data(), endOf(band)); });
  inParallel(threads, bands,
             [&](std::size_t band) { takeMarkedAway(surface, marks, band * bandRows * surface.width, endOf(band) * surface.width); });
}

}  // namespace

void check(const CleanLimits& limits) {
  if (!(limits.edgeAngle > 0 && limits.edgeAngle <= 90)) {
    throw Failure(Status::badParameter, "settings: the angle of edges has to be above 0 and at most 90 degrees");
  }
  if (!(limits.outlier >= 0 && limits.outlier < 1e6))
    throw Failure(Status::badParameter, "settings: the limit of outliers has to be 0 or more");
  if (limits.leastPatch < 0) throw Failure(Status::badParameter, "settings: the smallest patch has to be 0 or more points");
}

void clean(const Surface& surface, const CleanLimits& limits, std::size_t threads) {
  if (!limits.on) return;
  takeSingleOnesAway(surface, limits, threads);
  if (limits.leastPatch < 2) return;
  for (const Run& run : smallPatches(surface.reason, surface.width, surface.height, static_cast<std::size_t>(limits.leastPatch))) {
    for (std::size_t column = run.first; column < run.end; ++column) {
      takeAway(surface, run.row * surface.width + column, static_cast<std::uint8_t>(Reason::component));
    }
  }
}

}  // namespace fringix::scan
