#include "acceptance/fits.h"

#include <cmath>
#include <eigen3/Eigen/Cholesky>
#include <eigen3/Eigen/Core>
#include <eigen3/Eigen/Eigenvalues>
#include <stdexcept>
#include <string>

namespace fringix::tool {
namespace {

using Vector3 = Eigen::Vector3d;
using Matrix3 = Eigen::Matrix3d;
using Vector4 = Eigen::Vector4d;
using Matrix4 = Eigen::Matrix4d;

Vector3 toVector(const Place& place) { return {place[0], place[1], place[2]}; }
Place toPlace(const Vector3& vector) { return {vector[0], vector[1], vector[2]}; }

void require(bool fits, const char* shape, const std::string& reason) {
  if (!fits) throw std::runtime_error(std::string("no ") + shape + " goes through the points: " + reason);
}

// Where points lie, and along which axes, in the order of how far they reach.
struct Spread {
  Vector3 middle;
  Vector3 squares;  // mean squares along the axes, the smallest first
  Matrix3 axes;     // columns
};

Spread spreadOf(std::span<const Place> points, std::size_t least, const char* shape) {
  require(points.size() >= least, shape,
          "there are " + std::to_string(points.size()) + ", at least " + std::to_string(least) + " are needed");
  const auto count = static_cast<double>(points.size());
  Vector3 sum = Vector3::Zero();
  for (const Place& point : points) sum += toVector(point);
  require(sum.allFinite(), shape, "some have no place");
  const Vector3 middle = sum / count;
  Matrix3 squares = Matrix3::Zero();
  for (const Place& point : points) {
    const Vector3 offset = toVector(point) - middle;
    squares += offset * offset.transpose();
  }
  const Eigen::SelfAdjointEigenSolver<Matrix3> solver(squares / count);
  constexpr double nothing = 1e-12;  // of the largest square: a millionth of the extent
  require(solver.eigenvalues()[1] > nothing * solver.eigenvalues()[2], shape, "all lie on a line");
  return {middle, solver.eigenvalues(), solver.eigenvectors()};
}

// The spread of points that a sphere may go through, so far as its shape tells.
Spread requireBent(std::span<const Place> points) {
  Spread spread = spreadOf(points, 4, "sphere");
  constexpr double flat = 1e-10;
  require(spread.squares[0] > flat * spread.squares[2], "sphere", "all lie in a plane");
  return spread;
}

// |p|² = 2 p c + (r² - |c|²) is linear in c and the bracket. Around the points' middle the numbers stay small.
FittedSphere algebraicSphere(std::span<const Place> points) {
  const Vector3 middle = requireBent(points).middle;
  Matrix4 sums = Matrix4::Zero();
  Vector4 right = Vector4::Zero();
  for (const Place& point : points) {
    const Vector3 offset = toVector(point) - middle;
    const Vector4 row{2 * offset[0], 2 * offset[1], 2 * offset[2], 1};
    sums += row * row.transpose();
    right += row * offset.squaredNorm();
  }
  const Vector4 solution = sums.ldlt().solve(right);
  const Vector3 centre = solution.head<3>();
  return {toPlace(middle + centre), std::sqrt(solution[3] + centre.squaredNorm())};
}

// A step of Gauss and Newton: by how much centre and radius change. With a radius that is given only the centre does.
Vector4 stepOf(const FittedSphere& sphere, std::span<const Place> points, bool radiusIsGiven) {
  Matrix4 sums = Matrix4::Zero();
  Vector4 right = Vector4::Zero();
  const Vector3 centre = toVector(sphere.centre);
  for (const Place& point : points) {
    const Vector3 offset = toVector(point) - centre;
    const double distance = offset.norm();
    if (distance == 0) continue;
    Vector4 row;
    row << offset / distance, radiusIsGiven ? 0.0 : 1.0;
    sums += row * row.transpose();
    right += row * (distance - sphere.radius);
  }
  if (radiusIsGiven) sums(3, 3) = 1;
  return sums.ldlt().solve(right);
}

FittedSphere refined(FittedSphere sphere, std::span<const Place> points, bool radiusIsGiven) {
  constexpr int mostSteps = 50;
  constexpr double settled = 1e-12;
  for (int i = 0; i < mostSteps; ++i) {
    const Vector4 step = stepOf(sphere, points, radiusIsGiven);
    require(step.allFinite(), "sphere", "they do not determine its centre");
    sphere.centre = toPlace(toVector(sphere.centre) + step.head<3>());
    sphere.radius += step[3];
    if (step.norm() <= settled * sphere.radius) return sphere;
  }
  require(std::isfinite(sphere.radius) && sphere.radius > 0, "sphere", "they do not determine its radius");
  return sphere;
}

}  // namespace

FittedSphere fitSphere(std::span<const Place> points) { return refined(algebraicSphere(points), points, false); }

FittedSphere fitSphereOfRadius(std::span<const Place> points, double radius) {
  return refined({algebraicSphere(points).centre, radius}, points, true);
}

FittedPlane fitPlane(std::span<const Place> points) {
  const Spread spread = spreadOf(points, 3, "plane");
  const Vector3 normal = spread.axes.col(0);
  const double distance = normal.dot(spread.middle);
  return distance < 0 ? FittedPlane{toPlace(-normal), -distance} : FittedPlane{toPlace(normal), distance};
}

}  // namespace fringix::tool
