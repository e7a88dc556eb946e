// What is true of a scene whose surfaces are known, and how far points are from it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "scanning/place.h"

namespace fringix::tool {

struct TruePlane {
  Place normal{};  // away from the head
  double distance = 0;
  std::vector<Place> corners{};  // in their order around it; none: it has no borders
};

struct TrueSphere {
  Place centre{};
  double radius = 0;
};

struct Truth {
  std::vector<TruePlane> planes{};
  std::vector<TrueSphere> spheres{};
};

// From the text of a head's truth.json. Throws std::runtime_error when it is none, or tells of no plane and no sphere.
Truth readTruth(std::string_view text);

// The distance to the nearest surface in mm, above 0 when the point lies behind it, as the head sees it.
double errorOf(const Truth& truth, const Place& point);

// Of errors, in mm, and of the standard deviations that were expected of them.
struct ErrorFigures {
  double rootMeanSquare = 0;
  double within95 = 0;  // 95 % of the errors are no larger than this
  double mean = 0;
  double largest = 0;
  double beyond = 0;  // share of the errors that are larger than 5 standard deviations
};

ErrorFigures figuresOf(std::span<const float> errors, std::span<const float> sigmas);

// The value that `share` of the numbers do not exceed; 0 of none.
double quantile(std::vector<float> numbers, double share);

}  // namespace fringix::tool
