#include "scanning/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace fringix::tool {
namespace {

struct Reason {
  const char* name;  // in scan.json
  const char* text;
};

constexpr Reason reasons[] = {{"point", "gives a point"},
                              {"saturation", "too bright"},
                              {"noise", "too dark, or too uncertain"},
                              {"grayMargin", "Gray code uncertain"},
                              {"residual", "period and phase contradict each other"},
                              {"column", "outside of the projector's picture, or at its border"},
                              {"unsteady", "something moved"},
                              {"geometry", "outside of the depths that are wanted"},
                              {"edge", "at an edge"},
                              {"outlier", "stands out of its neighbours"},
                              {"component", "in a patch of few points"}};
static_assert(std::size(reasons) == SLSCAN_REASONS);

double percentOf(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
}

const char* methodOf(const SLScanPlan& plan) {
  return plan.method == SLSCAN_THREE_FREQUENCIES ? "three frequencies" : "Gray code and phase";
}

// "n of the lit pixels" counts a pixel that gives a point though its light is too weak to be called lit.
double litPercent(const ScanResult& result) { return percentOf(result.points(), std::max(result.lit, result.points())); }

Json describePlan(const ScanTask& task) {
  const SLScanPlan& plan = task.plan;
  return Json::object({{"method", methodOf(plan)},
                       {"projectorWidth", plan.projectorWidth},
                       {"period", plan.period},
                       {"steps", plan.steps},
                       {"generated", task.generated},
                       {"pictures", scan::pictureCount(plan)}});
}

Json describeRegion(const std::optional<Region>& region) {
  if (!region) return nullptr;
  return Json::object({{"x", region->x}, {"y", region->y}, {"width", region->width}, {"height", region->height}});
}

Json describeSettings(const SLScanSettings& settings) {
  return Json::object({{"threads", settings.threads},
                       {"saturation", settings.saturation},
                       {"noise", settings.noise},
                       {"noisePerLevel", settings.noisePerLevel},
                       {"periodShare", settings.periodShare},
                       {"grayMargin", settings.grayMargin},
                       {"residual", settings.residual},
                       {"unsteadiness", settings.unsteadiness},
                       {"sigma", settings.sigma},
                       {"nearest", settings.nearest},
                       {"farthest", settings.farthest},
                       {"clean", settings.clean},
                       {"leastPatch", settings.leastPatch},
                       {"edgeAngle", settings.edgeAngle},
                       {"outlier", settings.outlier}});
}

Json describeReasons(const SLScanFindings& findings) {
  Json counts = Json::object({});
  for (std::size_t i = 0; i < std::size(reasons); ++i) counts.add(reasons[i].name, findings.counts[i]);
  return counts;
}

Json describeErrors(const ScanResult& result) {
  Json errors = Json::object({{"medianSigma", result.medianSigma}, {"rootMeanSquareSigma", result.findings().expectedSigma}});
  if (result.repeatability.scans() > 1) errors.add("repeatability", result.repeatability.deviation());
  if (!result.trueError) return errors;
  errors.add("true", Json::object({{"rootMeanSquare", result.trueError->rootMeanSquare},
                                   {"within95", result.trueError->within95},
                                   {"mean", result.trueError->mean},
                                   {"largest", result.trueError->largest},
                                   {"beyond5SigmaPercent", 100 * result.trueError->beyond}}));
  return errors;
}

// Of the levels, as far as it does not grow with them.
double expectedNoise(const ScanResult& result) { return std::hypot(result.task.settings.noise, std::sqrt(1.0 / 12)); }

bool isNoisy(const ScanResult& result) {
  constexpr double tolerance = 1.2;
  return result.findings().measuredNoise > tolerance * expectedNoise(result);
}

Json describeCautions(const ScanTask& task) { return Json::array({task.cautions.begin(), task.cautions.end()}); }

}  // namespace

ReportTable summaryOf(const ScanResult& result) {
  ReportTable table{"", {}};
  const auto row = [&](const char* name, std::string value) { table.rows.push_back({name, std::move(value)}); };
  row("points", fmt::format("{} of {} pixels", result.points(), result.pixels()));
  row("measured", fmt::format("{:.1f} % of {} lit pixels", litPercent(result), result.lit));
  row("expected error", fmt::format("{:.4f} mm (median sigma)", result.medianSigma));
  if (result.trueError) {
    row("true error",
        fmt::format("{:.4f} mm RMS, 95 % within {:.4f} mm, mean {:+.4f} mm, {:.3f} % beyond 5 sigma", result.trueError->rootMeanSquare,
                    result.trueError->within95, result.trueError->mean, 100 * result.trueError->beyond));
  }
  if (result.repeatability.scans() > 1) {
    row("repeatability",
        fmt::format("{:.4f} mm (deviation of a pixel over {} scans)", result.repeatability.deviation(), result.repeatability.scans()));
  }
  for (const std::string& caution : result.task.cautions) row("caution", caution);
  if (isNoisy(result)) {
    row("caution", fmt::format("the pictures' noise is {:.1f} grey levels, not {:.1f}; the expected errors count with it",
                               result.findings().measuredNoise, expectedNoise(result)));
  }
  if (result.findings().flickers != 0) row("caution", fmt::format("the light flickers, by {:.1f} %", 100 * result.findings().flicker));
  if (result.findings().moves != 0) row("caution", "something moved while the pictures were taken");
  return table;
}

ReportTable timesOf(std::span<const StepTime> times) {
  ReportTable table{"Time", {}};
  std::chrono::duration<double> total{};
  for (const StepTime& step : times) {
    table.rows.push_back({step.name, fmt::format("{:.1f} ms", step.time.count() * 1000)});
    total += step.time;
  }
  table.rows.push_back({"total", fmt::format("{:.1f} ms", total.count() * 1000)});
  return table;
}

ReportTable reasonsOf(const ScanResult& result) {
  ReportTable table{"Pixels", {}};
  for (std::size_t i = 0; i < std::size(reasons); ++i) {
    const std::uint64_t count = result.findings().counts[i];
    if (count != 0) table.rows.push_back({reasons[i].text, fmt::format("{} ({:.1f} %)", count, percentOf(count, result.pixels()))});
  }
  return table;
}

Json describe(const ScanResult& result, std::span<const StepTime> times, const std::string& unit) {
  Json seconds = Json::object({});
  for (const StepTime& step : times) seconds.add(step.name, step.time.count());
  const SLScanFindings& findings = result.findings();
  return Json::object({{"format", "fringix-scan"},
                       {"version", 1},
                       {"unit", unit},
                       {"serial", result.task.calibration.serial},
                       {"calibrated", result.task.calibration.date},
                       {"channels", Json::array({result.task.channels.begin(), result.task.channels.end()})},
                       {"exposuresInUs", Json::array({result.task.exposures.begin(), result.task.exposures.end()})},
                       {"roi", describeRegion(result.task.roi)},
                       {"width", result.width()},
                       {"height", result.height()},
                       {"plan", describePlan(result.task)},
                       {"settings", describeSettings(result.task.settings)},
                       {"points", result.points()},
                       {"litPixels", result.lit},
                       {"measuredPercent", litPercent(result)},
                       {"pixels", describeReasons(findings)},
                       {"errorsInMm", describeErrors(result)},
                       {"measuredNoise", findings.measuredNoise},
                       {"cautions", describeCautions(result.task)},
                       {"noisy", isNoisy(result)},
                       {"flicker", findings.flicker},
                       {"flickers", findings.flickers != 0},
                       {"moves", findings.moves != 0},
                       {"seconds", std::move(seconds)}});
}

}  // namespace fringix::tool
