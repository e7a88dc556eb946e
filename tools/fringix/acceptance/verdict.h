// The worst of all positions, against limits.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "acceptance/position.h"
#include "console/json.h"

namespace fringix::tool {

// In mm. Where it is 0, a limit is so many times the expected standard deviation of the points as is usual.
struct AcceptanceLimits {
  double form = 0;
  double form95 = 0;
  double size = 0.03;
  double spacing = 0.03;
  double flatness = 0;
  double flatness95 = 0;
};

// Of evenly noisy points 99.7 % lie within 6 of them, and 95 % within 4.
inline constexpr double usualSigmas = 7;
inline constexpr double usualSigmas95 = 5;

struct Line {
  Figure figure = Figure::form;
  Artefact artefact = Artefact::sphere;  // where it was worst
  std::uint32_t position = 0;
  double value = 0;
  double sigma = 0;
  double limit = 0;

  bool isKept() const;
};

struct Verdict {
  std::vector<Line> lines;  // in the order of Figure, those that were measured
  bool isAccepted = true;
  bool isComplete = true;  // no artefact was measured at fewer positions than an acceptance takes
};

// The worst is what comes closest to its limit, or goes farthest beyond. `platesOwn` is the certified flatness, which the plate may add.
Verdict judge(std::span<const Position> positions, const AcceptanceLimits& limits, double platesOwn);

const char* nameOf(Figure figure);   // "formError", in JSON
const char* wordsOf(Figure figure);  // for people
const char* signOf(Figure figure);   // "PF"

Json describe(const Verdict& verdict, std::span<const Position> positions);

}  // namespace fringix::tool
