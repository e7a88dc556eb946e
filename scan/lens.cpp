#include "lens.h"

#include <cmath>

namespace fringix::scan {

namespace {

double radialFactor(const Distortion& lens, double square) { return 1 + square * (lens.k1 + square * (lens.k2 + square * lens.k3)); }

double radialSlope(const Distortion& lens, double square) { return lens.k1 + square * (2 * lens.k2 + square * 3 * lens.k3); }

}  // namespace

Place distort(const Distortion& lens, Place place) {
  const double square = place.x * place.x + place.y * place.y;
  const double radial = radialFactor(lens, square);
  return {place.x * radial + 2 * lens.p1 * place.x * place.y + lens.p2 * (square + 2 * place.x * place.x),
          place.y * radial + lens.p1 * (square + 2 * place.y * place.y) + 2 * lens.p2 * place.x * place.y};
}

Jacobian jacobian(const Distortion& lens, Place place) {
  const double square = place.x * place.x + place.y * place.y;
  const double radial = radialFactor(lens, square);
  const double slope = 2 * radialSlope(lens, square);
  return {radial + slope * place.x * place.x + 2 * lens.p1 * place.y + 6 * lens.p2 * place.x,
          slope * place.x * place.y + 2 * lens.p1 * place.x + 2 * lens.p2 * place.y,
          radial + slope * place.y * place.y + 6 * lens.p1 * place.y + 2 * lens.p2 * place.x};
}

Place undistort(const Distortion& lens, Place shown, Place start) {
  constexpr int mostSteps = 30;
  constexpr double closeEnough = 1e-9;
  Place place = start;
  for (int step = 0; step < mostSteps; ++step) {
    const Place there = distort(lens, place);
    const Place miss{shown.x - there.x, shown.y - there.y};
    const Jacobian slope = jacobian(lens, place);
    const double scale = 1 / slope.determinant();
    place.x += scale * (slope.yy * miss.x - slope.xy * miss.y);
    place.y += scale * (slope.xx * miss.y - slope.xy * miss.x);
    if (std::abs(miss.x) + std::abs(miss.y) < closeEnough) break;
  }
  return place;
}

}  // namespace fringix::scan
