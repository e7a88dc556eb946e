#include "normals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "parallel.h"
#include "point_rows.h"

namespace fringix::scan {

namespace {

constexpr std::size_t bandRows = 16;
constexpr std::ptrdiff_t reach = 2;

using Point = std::array<float, 3>;

// Neighbours belong to one surface when they are not farther apart than this many times what lies between their rays.
constexpr double farthest = 6;

class Band {
 public:
  Band(const float* points, std::size_t width, std::size_t height, const Vector& pinhole, double spacing, std::size_t first)
      : width_(width),
        pinhole_{static_cast<float>(pinhole[0]), static_cast<float>(pinhole[1]), static_cast<float>(pinhole[2])},
        step_(static_cast<float>(spacing * spacing * farthest * farthest)),
        window_(points, width, height, reach, first),
        across_(width),
        down_(width) {}

  void write(float* normals) {
    sumAcross();
    sumDown();
    for (std::size_t i = 0; i < width_; ++i) writeOne(i, normals + 3 * i);
    window_.moveDown();
  }

 private:
  // What the surface does over 2 * reach columns, as the sum over all rows in reach, and the same the other way: the slope of the plane
  // through the 5 x 5 points as far as their outer rows tell it. Not a number when one of those is missing.
  void sumAcross() {
    std::fill(across_.begin(), across_.end(), Point{});
    for (std::ptrdiff_t row = -reach; row <= reach; ++row) addDifference(window_[row], reach, window_[row], -reach, across_);
  }
  void sumDown() {
    std::fill(down_.begin(), down_.end(), Point{});
    for (std::ptrdiff_t column = -reach; column <= reach; ++column) addDifference(window_[reach], column, window_[-reach], column, down_);
  }

  void addDifference(const PointRow& to, std::ptrdiff_t toOffset, const PointRow& from, std::ptrdiff_t fromOffset,
                     std::vector<Point>& sums) const {
    const float *const toX = to.x() + toOffset, *const toY = to.y() + toOffset, *const toZ = to.z() + toOffset;
    const float *const fromX = from.x() + fromOffset, *const fromY = from.y() + fromOffset, *const fromZ = from.z() + fromOffset;
    for (std::size_t i = 0; i < width_; ++i) {
      sums[i][0] += toX[i] - fromX[i];
      sums[i][1] += toY[i] - fromY[i];
      sums[i][2] += toZ[i] - fromZ[i];
    }
  }

  void writeOne(std::size_t i, float* normal) const {
    const Point here = at(0, static_cast<std::ptrdiff_t>(i));
    const Point ray = {here[0] - pinhole_[0], here[1] - pinhole_[1], here[2] - pinhole_[2]};
    const float range = product(ray, ray);
    constexpr auto weight = static_cast<float>((2 * reach + 1) * 2 * reach);
    const float limit = step_ * range * weight * weight;
    const bool smooth = product(across_[i], across_[i]) < limit && product(down_[i], down_[i]) < limit;
    if (smooth) {
      writeCross(across_[i], down_[i], ray, normal);
    } else {
      writeFromNearest(static_cast<std::ptrdiff_t>(i), ray, step_ * range, normal);
    }
  }

  // At borders and steps: the neighbours on whichever sides belong to the surface.
  void writeFromNearest(std::ptrdiff_t column, const Point& ray, float limit, float* normal) const {
    const Point across = step(at(0, column - 1), at(0, column), at(0, column + 1), limit);
    const Point down = step(at(-1, column), at(0, column), at(1, column), limit);
    writeCross(across, down, ray, normal);
  }

  static Point step(const Point& before, const Point& here, const Point& behind, float limit) {
    const Point first = difference(here, before);
    const Point second = difference(behind, here);
    const bool firstBelongs = product(first, first) < limit;
    const bool secondBelongs = product(second, second) < limit;
    if (firstBelongs && secondBelongs) return difference(behind, before);
    if (firstBelongs) return first;
    return secondBelongs ? second : Point{};
  }

  static void writeCross(const Point& a, const Point& b, const Point& ray, float* normal) {
    const Point vector = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    const float length = std::sqrt(product(vector, vector));
    const float scale = product(vector, ray) > 0 ? -1.0F / length : 1.0F / length;  // of nothing this makes no number
    for (std::size_t i = 0; i < 3; ++i) normal[i] = vector[i] * scale;
  }

  Point at(std::ptrdiff_t row, std::ptrdiff_t column) const {
    return {window_[row].x()[column], window_[row].y()[column], window_[row].z()[column]};
  }
  static Point difference(const Point& to, const Point& from) { return {to[0] - from[0], to[1] - from[1], to[2] - from[2]}; }
  static float product(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

  std::size_t width_;
  Point pinhole_;
  float step_;
  RowWindow window_;
  std::vector<Point> across_;
  std::vector<Point> down_;
};

}  // namespace

void normals(const float* points, std::size_t width, std::size_t height, const Vector& pinhole, double spacing, float* normals,
             std::size_t threads) {
  inParallel(threads, (height + bandRows - 1) / bandRows, [&](std::size_t number) {
    const std::size_t first = number * bandRows;
    Band band(points, width, height, pinhole, spacing, first);
    for (std::size_t row = first; row < std::min(first + bandRows, height); ++row) band.write(normals + 3 * width * row);
  });
}

}  // namespace fringix::scan
