#include "benchmark/tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

namespace fringix::tool {
namespace {

constexpr std::size_t histogramRows = 10;
constexpr std::size_t longestBar = 40;

std::string withDecimals(const std::optional<double>& number, int decimals) {
  return number ? fmt::format("{:.{}f}", *number, decimals) : "-";
}

std::string inMilliseconds(const std::optional<double>& time) { return withDecimals(time, 3); }

std::string lineOf(const Measured& one) {
  const Timing& timing = one.timing;
  std::string line = fmt::format("{:<28}{:>9}{:>11}{:>11}{:>11}{:>11}{:>11}{:>9}", one.what, timing.samples, inMilliseconds(timing.median),
                                 inMilliseconds(timing.p95), inMilliseconds(timing.p99), inMilliseconds(timing.worst),
                                 withDecimals(one.callsPerSecond(), 1), withDecimals(one.megabytesPerSecond(), 1));
  if (one.lost > 0) line += fmt::format("  {} lost", one.lost);
  return line + "\n";
}

std::string inWords(Size size) { return fmt::format("{} x {}", size.width, size.height); }

struct Fact {
  const char* name;
  std::string (*of)(const Findings& findings);
};

constexpr Fact facts[] = {
    {"head", [](const Findings& all) { return fmt::format("{} at {}", all.head.serial, all.head.address); }},
    {"model", [](const Findings& all) { return all.head.model.empty() ? "not told" : all.head.model; }},
    {"protocol version", [](const Findings& all) { return fmt::format("{}", all.head.protocolVersion); }},
    {"camera", [](const Findings& all) { return inWords(all.head.camera); }},
    {"projector", [](const Findings& all) { return inWords(all.head.projector); }},
    {"library version", [](const Findings& all) { return fmt::format("{}", all.libraryVersion); }},
    {"computer", [](const Findings& all) { return all.system; }},
    {"date", [](const Findings& all) { return all.date; }},
};

// What two benchmarks are compared by.
struct Quantity {
  const char* name;  // in JSON
  const char* what;  // for people
  int decimals;
  std::optional<double> (*of)(const Measured& one);
};

constexpr Quantity quantities[] = {
    {"median", "median ms", 3, [](const Measured& one) { return std::optional(one.timing.median); }},
    {"p95", "p95 ms", 3, [](const Measured& one) { return one.timing.p95; }},
    {"p99", "p99 ms", 3, [](const Measured& one) { return one.timing.p99; }},
    {"worst", "worst ms", 3, [](const Measured& one) { return std::optional(one.timing.worst); }},
    {"callsPerSecond", "calls/s", 1, [](const Measured& one) { return one.callsPerSecond(); }},
    {"megabytesPerSecond", "MB/s", 1, [](const Measured& one) { return one.megabytesPerSecond(); }},
};

using Pair = std::pair<const Measured*, const Measured*>;

const Measured* find(const Findings& findings, const std::string& name) {
  const auto found =
      std::find_if(findings.measured.begin(), findings.measured.end(), [&](const Measured& one) { return one.name == name; });
  return found == findings.measured.end() ? nullptr : &*found;
}

// In the first one's order, then what the second one alone has.
std::vector<Pair> pairsOf(const Findings& first, const Findings& second) {
  std::vector<Pair> pairs;
  for (const Measured& one : first.measured) pairs.emplace_back(&one, find(second, one.name));
  for (const Measured& other : second.measured)
    if (find(first, other.name) == nullptr) pairs.emplace_back(nullptr, &other);
  return pairs;
}

std::optional<double> valueOf(const Quantity& quantity, const Measured* one) { return one == nullptr ? std::nullopt : quantity.of(*one); }

std::optional<double> ratioOf(const std::optional<double>& first, const std::optional<double>& second) {
  return first && second && *first > 0 ? std::optional(*second / *first) : std::nullopt;
}

std::string row(const std::string& name, const std::string& first, const std::string& second, const std::string& ratio) {
  std::string line = fmt::format("{:<18}  {:>28}  {:>28}{:>9}", name, first, second, ratio);
  line.erase(line.find_last_not_of(' ') + 1);
  return line + "\n";
}

std::string comparisonOf(const Pair& pair) {
  const auto whatOf = [](const Measured* one) { return one == nullptr ? "not measured" : one->what; };
  const auto samplesOf = [](const Measured* one) { return one == nullptr ? "-" : fmt::format("{}", one->timing.samples); };
  const std::string& name = pair.first == nullptr ? pair.second->name : pair.first->name;
  // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): one of the two is there
  std::string text = "\n" + row(name, whatOf(pair.first), whatOf(pair.second), "");
  text += row("  samples", samplesOf(pair.first), samplesOf(pair.second), "");
  for (const Quantity& quantity : quantities) {
    const auto first = valueOf(quantity, pair.first);
    const auto second = valueOf(quantity, pair.second);
    const auto ratio = ratioOf(first, second);
    if (first || second)
      text += row(fmt::format("  {}", quantity.what), withDecimals(first, quantity.decimals), withDecimals(second, quantity.decimals),
                  ratio ? withDecimals(ratio, 2) : "");
  }
  return text;
}

Json toJson(const std::optional<double>& value) { return value ? Json(*value) : Json(nullptr); }

Json describe(const Pair& pair) {
  Json json = Json::object({{"name", pair.first == nullptr ? pair.second->name : pair.first->name}});
  for (const Quantity& quantity : quantities) {
    const auto first = valueOf(quantity, pair.first);
    const auto second = valueOf(quantity, pair.second);
    json.add(quantity.name,
             Json::object({{"first", toJson(first)}, {"second", toJson(second)}, {"ratio", toJson(ratioOf(first, second))}}));
  }
  return json;
}

}  // namespace

std::string tableOf(const Findings& findings) {
  std::string text;
  for (const Fact& fact : facts) text += fmt::format("{:<18}{}\n", fact.name, fact.of(findings));
  text += fmt::format("\n{:<28}{:>9}{:>11}{:>11}{:>11}{:>11}{:>11}{:>9}\n", "", "samples", "median ms", "p95 ms", "p99 ms", "worst ms",
                      "calls/s", "MB/s");
  for (const Measured& one : findings.measured) text += lineOf(one);
  for (const NotMeasured& one : findings.notMeasured) text += fmt::format("{:<28}{:>9}  {}\n", one.what, "-", one.reason);
  return text;
}

std::string histogramOf(const Measured& measured) {
  const std::vector<Bin> bins = binsOf(measured.sorted, histogramRows);
  const std::size_t most = std::max_element(bins.begin(), bins.end(), [](const Bin& a, const Bin& b) { return a.count < b.count; })->count;
  const double width = bins.front().to - bins.front().from;
  const int decimals = width > 0 ? std::max(3, static_cast<int>(std::ceil(-std::log10(width) - 1e-9))) : 3;
  std::string text = fmt::format("{}, how long in ms\n", measured.what);
  for (const Bin& bin : bins) {
    const std::size_t length = (2 * longestBar * bin.count + most) / (2 * most);
    text += fmt::format("{:>9.{}f} to {:>9.{}f}  {:<{}}{:>9}{:>7.1f} %\n", bin.from, decimals, bin.to, decimals, std::string(length, '#'),
                        longestBar, bin.count, 100.0 * static_cast<double>(bin.count) / static_cast<double>(measured.sorted.size()));
  }
  return text;
}

std::string comparisonOf(const NamedFindings& first, const NamedFindings& second) {
  std::string text = row("", first.name, second.name, "ratio");
  for (const Fact& fact : facts) text += row(fact.name, fact.of(first.findings), fact.of(second.findings), "");
  for (const Pair& pair : pairsOf(first.findings, second.findings)) text += comparisonOf(pair);
  return text;
}

Json describeComparison(const NamedFindings& first, const NamedFindings& second) {
  std::vector<Json> rows;
  for (const Pair& pair : pairsOf(first.findings, second.findings)) rows.push_back(describe(pair));
  return Json::object({{"first", first.name}, {"second", second.name}, {"measured", Json::array(std::move(rows))}});
}

}  // namespace fringix::tool
