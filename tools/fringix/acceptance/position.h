// What one scan of an artefact says of a head.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "acceptance/artefacts.h"
#include "clouds/point_grid.h"
#include "scanning/place.h"

namespace fringix::tool {

// docs/accuracy.md defines them.
enum class Figure { form, form95, size, spacing, spacingOfCertified, flatness, flatness95 };

struct Reading {
  Figure figure = Figure::form;
  double value = 0;  // mm
  double sigma = 0;  // of form and flatness: the expected standard deviation that they are judged by, in mm
};

// Of each pixel of the part of the picture that shows the artefact, in mm; no numbers beside it.
struct DeviationMap {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<float> values{};
};

struct Position {
  Artefact artefact = Artefact::sphere;
  std::uint32_t number = 0;  // from 1
  std::size_t points = 0;
  std::vector<Reading> readings{};
  DeviationMap deviations{};
};

struct View {
  PointGrid grid;
  Place camera{};  // where it stands
};

// Throws Failure when the artefact is not found, or is not that of the certificate.
Position measurePosition(Artefact artefact, std::uint32_t number, const View& view, const Certified& certified);

}  // namespace fringix::tool
