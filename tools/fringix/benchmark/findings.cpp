#include "benchmark/findings.h"

#include <optional>
#include <stdexcept>

#include "console/read_json.h"

namespace fringix::tool {
namespace {

constexpr const char* format = "fringix-bench";
constexpr std::int64_t formatVersion = 1;

Json toJson(Size size) { return Json::object({{"width", size.width}, {"height", size.height}}); }

Json toJson(const std::optional<double>& number) { return number ? Json(*number) : Json(nullptr); }

Json toJson(const Measured& one) {
  const Timing& timing = one.timing;
  Json milliseconds = Json::object({{"least", timing.least},
                                    {"mean", timing.mean},
                                    {"median", timing.median},
                                    {"p95", toJson(timing.p95)},
                                    {"p99", toJson(timing.p99)},
                                    {"worst", timing.worst}});
  return Json::object({{"name", one.name},
                       {"what", one.what},
                       {"samples", timing.samples},
                       {"lost", one.lost},
                       {"bytes", one.bytes},
                       {"milliseconds", std::move(milliseconds)},
                       {"callsPerSecond", toJson(one.callsPerSecond())},
                       {"megabytesPerSecond", toJson(one.megabytesPerSecond())}});
}

Json toJson(const BenchedHead& head) {
  return Json::object({{"address", head.address},
                       {"serial", head.serial},
                       {"model", head.model.empty() ? Json(nullptr) : Json(head.model)},
                       {"protocolVersion", head.protocolVersion},
                       {"camera", toJson(head.camera)},
                       {"projector", toJson(head.projector)}});
}

template <class Element>
Json listOf(const std::vector<Element>& elements, Json (*toJson)(const Element&)) {
  std::vector<Json> list;
  for (const Element& element : elements) list.push_back(toJson(element));
  return Json::array(std::move(list));
}

Size sizeFrom(const ReadJson& json) {
  return {static_cast<std::uint32_t>(json.at("width").integer(0, UINT32_MAX)),
          static_cast<std::uint32_t>(json.at("height").integer(0, UINT32_MAX))};
}

std::int32_t numberFrom(const ReadJson& json) { return static_cast<std::int32_t>(json.integer(INT32_MIN, INT32_MAX)); }

std::optional<double> shareFrom(const ReadJson& json) { return json.isNull() ? std::nullopt : std::optional(json.number()); }

BenchedHead headFrom(const ReadJson& json) {
  const ReadJson model = json.at("model");
  return {json.at("address").text(),          numberFrom(json.at("serial")),
          model.isNull() ? "" : model.text(), numberFrom(json.at("protocolVersion")),
          sizeFrom(json.at("camera")),        sizeFrom(json.at("projector"))};
}

Timing timingFrom(const ReadJson& json) {
  const ReadJson times = json.at("milliseconds");
  return {static_cast<std::size_t>(json.at("samples").integer(1, INT64_MAX)),
          times.at("least").number(),
          times.at("mean").number(),
          times.at("median").number(),
          shareFrom(times.at("p95")),
          shareFrom(times.at("p99")),
          times.at("worst").number()};
}

Measured measuredFrom(const ReadJson& json) {
  return {json.at("name").text(), json.at("what").text(), static_cast<std::uint64_t>(json.at("bytes").integer(0, INT64_MAX)),
          static_cast<std::size_t>(json.at("lost").integer(0, INT64_MAX)), timingFrom(json)};
}

NotMeasured notMeasuredFrom(const ReadJson& json) { return {json.at("name").text(), json.at("what").text(), json.at("reason").text()}; }

}  // namespace

Json describe(const Findings& findings) {
  const auto missing = [](const NotMeasured& one) {
    return Json::object({{"name", one.name}, {"what", one.what}, {"reason", one.reason}});
  };
  return Json::object({{"format", format},
                       {"version", formatVersion},
                       {"date", findings.date},
                       {"head", toJson(findings.head)},
                       {"libraryVersion", findings.libraryVersion},
                       {"system", findings.system},
                       {"complete", findings.complete},
                       {"measured", listOf<Measured>(findings.measured, toJson)},
                       {"notMeasured", listOf<NotMeasured>(findings.notMeasured, missing)},
                       {"changed", findings.changed}});
}

Findings readFindings(std::string_view text) {
  const ReadJson json(text);
  if (json.at("format").text() != format || json.at("version").integer(0, INT64_MAX) != formatVersion)
    throw std::runtime_error("it is no \"fringix-bench\" of version 1");
  Findings findings{json.at("date").text(), headFrom(json.at("head")), numberFrom(json.at("libraryVersion")), json.at("system").text(),
                    json.at("complete").truth()};
  for (const ReadJson& one : json.at("measured").elements()) findings.measured.push_back(measuredFrom(one));
  for (const ReadJson& one : json.at("notMeasured").elements()) findings.notMeasured.push_back(notMeasuredFrom(one));
  findings.changed = json.at("changed").text();
  return findings;
}

}  // namespace fringix::tool
