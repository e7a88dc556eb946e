// How far measured points are from the ideal shape that fits them best.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "acceptance/fits.h"

namespace fringix::tool {

inline constexpr double shareDropped = 0.003;  // at most, of the points: those farthest from the shape

struct Form {
  double whole = 0;     // from the lowest to the highest deviation, without the points dropped
  double within95 = 0;  // thickness of the thinnest shell or slab, concentric or parallel, that has 95 % of all points
};

struct SphereFigures {
  FittedSphere sphere;  // without the points dropped
  FittedSphere ofCertifiedRadius;
  Form form;
  std::vector<double> deviations;  // of all points
};

struct PlaneFigures {
  FittedPlane plane;
  Form form;
  std::vector<double> deviations;
};

// Both throw std::runtime_error when nothing fits.
SphereFigures measureSphere(std::span<const Place> points, double certifiedRadius);
PlaneFigures measurePlane(std::span<const Place> points);

}  // namespace fringix::tool
