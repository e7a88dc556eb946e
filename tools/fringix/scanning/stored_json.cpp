#include "scanning/stored_json.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "scanning/truth.h"

namespace fringix::tool {
namespace {

using Json = nlohmann::json;

void requireFormat(const Json& json, const char* format) {
  if (json.at("format") != format || json.at("version") != 1) throw std::runtime_error(fmt::format("it is no \"{}\" of version 1", format));
}

Place placeFrom(const Json& json) { return json.get<Place>(); }

TruePlane planeFrom(const Json& json) {
  TruePlane plane{placeFrom(json.at("normal")), json.at("distance").get<double>()};
  if (!json.contains("corners")) return plane;
  for (const Json& corner : json.at("corners")) plane.corners.push_back(placeFrom(corner));
  return plane;
}

Truth truthFrom(const Json& json) {
  requireFormat(json, "fringix-truth");
  Truth truth;
  for (const Json& plane : json.at("planes")) truth.planes.push_back(planeFrom(plane));
  for (const Json& sphere : json.at("spheres"))
    truth.spheres.push_back({placeFrom(sphere.at("center")), sphere.at("radius").get<double>()});
  if (truth.planes.empty() && truth.spheres.empty()) throw std::runtime_error("it tells of no plane and of no sphere to measure against");
  return truth;
}

std::optional<Region> regionFrom(const Json& json) {
  if (json.is_null()) return {};
  const auto number = [&](const char* name) { return json.at(name).get<std::uint32_t>(); };
  return Region{number("x"), number("y"), number("width"), number("height")};
}

StoredScan scanFrom(const Json& json) {
  requireFormat(json, "fringix-scan");
  const Json& plan = json.at("plan");
  StoredScan stored;
  stored.channels = json.at("channels").get<std::vector<std::uint32_t>>();
  if (stored.channels.empty()) throw std::runtime_error("it names no channel");
  stored.exposures = json.at("exposuresInUs").get<std::vector<std::int32_t>>();
  stored.roi = regionFrom(json.at("roi"));
  stored.generated = plan.at("generated").get<bool>();
  stored.plan.method = plan.at("method") == "three frequencies" ? SLSCAN_THREE_FREQUENCIES : SLSCAN_GRAY_AND_PHASE;
  stored.plan.projectorWidth = plan.at("projectorWidth").get<std::int32_t>();
  stored.plan.period = plan.at("period").get<std::int32_t>();
  stored.plan.steps = plan.at("steps").get<std::int32_t>();
  return stored;
}

template <class Read>
auto parsed(const char* name, std::string_view text, Read read) {
  try {
    return read(Json::parse(text));
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{} cannot be used: {}", name, error.what()));
  }
}

}  // namespace

Truth readTruth(std::string_view text) { return parsed("truth.json", text, truthFrom); }

StoredScan readStoredScan(std::string_view text) { return parsed("scan.json", text, scanFrom); }

}  // namespace fringix::tool
