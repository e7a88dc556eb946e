#include "report.h"

#include <fmt/format.h>
#include <fringix/fringix.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace fringix::bench {

namespace {

using nlohmann::ordered_json;

constexpr double noisyLoad = 0.5;  // other work that is runnable half of the time shows in the numbers

Summary summarize(const std::vector<Batch>& batches, Metric metric) {
  std::vector<double> values(batches.size());
  std::transform(batches.begin(), batches.end(), values.begin(), [&](const Batch& batch) { return valueOf(metric, batch); });
  std::sort(values.begin(), values.end());
  return {values[values.size() / 2], values.front(), values.back()};
}

bool isMet(const Quantity& quantity, double ratio, double difference) {
  if (quantity.mostMore) return difference <= *quantity.mostMore;
  if (!quantity.bound) return true;
  return moreIsBetter(quantity.metric) ? ratio >= *quantity.bound : ratio <= *quantity.bound;
}

std::string textOf(double value) { return fmt::format("{:.{}f}", value, value < 10 ? 3 : value < 1000 ? 1 : 0); }

std::string textOf(const Summary& summary) {
  return fmt::format("{} ({} - {})", textOf(summary.median), textOf(summary.lowest), textOf(summary.highest));
}

std::string boundOf(const Quantity& quantity) {
  if (quantity.mostMore) return fmt::format("<= +{:.0f}", *quantity.mostMore);
  return quantity.bound ? fmt::format("{} {:.2f}", moreIsBetter(quantity.metric) ? ">=" : "<=", *quantity.bound) : "";
}

std::string verdictOf(const Finding& finding) {
  if (!finding.quantity.bound && !finding.quantity.mostMore) return "";
  return finding.met ? "ok" : "MISSED";
}

template <class... Columns>
void printRow(const Columns&... columns) {
  fmt::print("{:<26} {:<15} {:>25} {:>25} {:>6} {:>7} {}\n", columns...);
}

ordered_json jsonOf(const Summary& summary) {
  return {{"median", summary.median}, {"lowest", summary.lowest}, {"highest", summary.highest}};
}

ordered_json jsonOf(const Finding& finding) {
  ordered_json json = {{"comparison", finding.comparison},
                       {"quantity", nameOf(finding.quantity.metric)},
                       {"library", jsonOf(finding.library)},
                       {"minimal_client", jsonOf(finding.byHand)},
                       {"ratio", finding.ratio}};
  if (finding.quantity.bound) {
    json[moreIsBetter(finding.quantity.metric) ? "at_least" : "at_most"] = *finding.quantity.bound;
    json["met"] = finding.met;
  }
  if (finding.quantity.mostMore) {
    json["more_at_most"] = *finding.quantity.mostMore;
    json["met"] = finding.met;
  }
  return json;
}

}  // namespace

std::vector<Finding> findingsOf(const Measurement& measurement) {
  std::vector<Finding> findings;
  for (const Quantity& quantity : measurement.quantities) {
    const Summary library = summarize(measurement.library, quantity.metric);
    const Summary byHand = summarize(measurement.byHand, quantity.metric);
    const double ratio = library.median / byHand.median;
    findings.push_back({measurement.name, quantity, library, byHand, ratio, isMet(quantity, ratio, library.median - byHand.median)});
  }
  return findings;
}

void printHeading(const MachineFacts& machine, const Plan& plan) {
  fmt::print("{}, {} cores, {}, load {:.2f}; up to {} rounds\n", machine.processor, machine.cores, machine.kernel, machine.load,
             plan.rounds);
  if (machine.load > noisyLoad) fmt::print("Note: the machine is busy, expect scatter.\n");
  if (plan.clientCore == plan.serverCore) fmt::print("Note: one core only, so client and server share it in every comparison.\n");
  fmt::print("\n");
  printRow("comparison", "quantity", "library", plan.againstItself ? "same" : "minimal client", "ratio", "bound", "");
}

void printFindings(const std::vector<Finding>& findings) {
  for (const Finding& finding : findings)
    printRow(finding.comparison, nameOf(finding.quantity.metric), textOf(finding.library), textOf(finding.byHand),
             fmt::format("{:.3f}", finding.ratio), boundOf(finding.quantity), verdictOf(finding));
}

void writeJson(const std::string& path, const MachineFacts& machine, const Plan& plan, const std::vector<Finding>& findings) {
  ordered_json rows = ordered_json::array();
  for (const Finding& finding : findings) rows.push_back(jsonOf(finding));
  const ordered_json report = {
      {"library_version", QORFringixVersion()},
      {"machine", {{"processor", machine.processor}, {"kernel", machine.kernel}, {"cores", machine.cores}, {"load", machine.load}}},
      {"rounds", plan.rounds},
      {"batch_seconds", plan.batchSeconds},
      {"minimal_client_against_itself", plan.againstItself},
      {"findings", rows}};
  std::ofstream file(path);
  file << report.dump(2) << '\n';
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace fringix::bench
