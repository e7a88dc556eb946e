#include "acceptance/verdict.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace fringix::tool {
namespace {

struct FigureNames {
  const char* sign;
  const char* name;
  const char* words;
};

constexpr FigureNames names[] = {{"PF", "formError", "probing error, form"},
                                 {"PF95", "formError95", "  of 95 % of the points"},
                                 {"PS", "sizeError", "probing error, size"},
                                 {"SD", "spacingError", "sphere-spacing error"},
                                 {"SDc", "spacingErrorAtCertifiedDiameter", "  at the certified diameter"},
                                 {"F", "flatness", "flatness error"},
                                 {"F95", "flatness95", "  of 95 % of the points"}};

double limitOf(const Reading& reading, const AcceptanceLimits& limits, double platesOwn) {
  const auto orSigmas = [&](double limit, double sigmas) { return limit > 0 ? limit : sigmas * reading.sigma; };
  switch (reading.figure) {
    case Figure::form:
      return orSigmas(limits.form, usualSigmas);
    case Figure::form95:
      return orSigmas(limits.form95, usualSigmas95);
    case Figure::size:
      return limits.size;
    case Figure::flatness:
      return orSigmas(limits.flatness, usualSigmas) + platesOwn;
    case Figure::flatness95:
      return orSigmas(limits.flatness95, usualSigmas95) + platesOwn;
    default:
      return limits.spacing;
  }
}

double shareOf(const Line& line) { return std::abs(line.value) / line.limit; }

bool isComplete(std::span<const Position> positions) {
  return std::all_of(std::begin(allArtefacts), std::end(allArtefacts), [&](Artefact artefact) {
    const auto count = std::count_if(positions.begin(), positions.end(), [&](const Position& one) { return one.artefact == artefact; });
    return count == 0 || count >= kindOf(artefact).positions;
  });
}

bool isWorse(double share, double other) { return std::isnan(share) || share > other; }

Json describe(const Line& line) {
  Json told = Json::object({{"worst", line.value}, {"artefact", kindOf(line.artefact).name}, {"position", line.position}});
  if (line.sigma > 0) told.add("expectedSigma", line.sigma);
  told.add("limit", line.limit);
  told.add("kept", line.isKept());
  return told;
}

Json describe(const Position& position) {
  std::vector<Json> readings;
  for (const Reading& reading : position.readings) {
    readings.push_back(Json::object({{"figure", nameOf(reading.figure)}, {"value", reading.value}}));
    if (reading.sigma > 0) readings.back().add("expectedSigma", reading.sigma);
  }
  return Json::object({{"artefact", kindOf(position.artefact).name},
                       {"position", position.number},
                       {"points", position.points},
                       {"readings", Json::array(std::move(readings))}});
}

}  // namespace

bool Line::isKept() const { return std::abs(value) <= limit; }

Verdict judge(std::span<const Position> positions, const AcceptanceLimits& limits, double platesOwn) {
  std::vector<std::optional<Line>> worst(std::size(names));
  for (const Position& position : positions) {
    for (const Reading& reading : position.readings) {
      const Line line{reading.figure, position.artefact, position.number,
                      reading.value,  reading.sigma,     limitOf(reading, limits, platesOwn)};
      std::optional<Line>& kept = worst[static_cast<std::size_t>(reading.figure)];
      if (!kept || isWorse(shareOf(line), shareOf(*kept))) kept = line;
    }
  }
  Verdict verdict;
  verdict.isComplete = isComplete(positions);
  for (const std::optional<Line>& line : worst) {
    if (!line) continue;
    verdict.lines.push_back(*line);
    verdict.isAccepted = verdict.isAccepted && line->isKept();
  }
  return verdict;
}

const char* nameOf(Figure figure) { return names[static_cast<std::size_t>(figure)].name; }
const char* wordsOf(Figure figure) { return names[static_cast<std::size_t>(figure)].words; }
const char* signOf(Figure figure) { return names[static_cast<std::size_t>(figure)].sign; }

Json describe(const Verdict& verdict, std::span<const Position> positions) {
  Json figures = Json::object({});
  for (const Line& line : verdict.lines) figures.add(nameOf(line.figure), describe(line));
  std::vector<Json> told;
  for (const Position& position : positions) told.push_back(describe(position));
  return Json::object({{"format", "fringix-acceptance"},
                       {"version", 1},
                       {"unit", "mm"},
                       {"accepted", verdict.isAccepted},
                       {"complete", verdict.isComplete},
                       {"figures", std::move(figures)},
                       {"positions", Json::array(std::move(told))}});
}

}  // namespace fringix::tool
