#include "scanning/stored_json.h"

#include <fmt/format.h>

#include <stdexcept>

#include "console/read_json.h"
#include "scanning/truth.h"

namespace fringix::tool {
namespace {

void requireFormat(const ReadJson& json, const char* format) {
  if (json.at("format").text() != format || json.at("version").number() != 1)
    throw std::runtime_error(fmt::format("it is no \"{}\" of version 1", format));
}

Place placeFrom(const ReadJson& json) {
  const std::vector<ReadJson> numbers = json.elements();
  Place place{};
  if (numbers.size() != place.size()) throw std::runtime_error(fmt::format("a place has {} numbers", numbers.size()));
  for (std::size_t i = 0; i < place.size(); ++i) place[i] = numbers[i].number();
  return place;
}

TruePlane planeFrom(const ReadJson& json) {
  TruePlane plane{placeFrom(json.at("normal")), json.at("distance").number()};
  if (!json.has("corners")) return plane;
  for (const ReadJson& corner : json.at("corners").elements()) plane.corners.push_back(placeFrom(corner));
  return plane;
}

Truth truthFrom(const ReadJson& json) {
  requireFormat(json, "fringix-truth");
  Truth truth;
  for (const ReadJson& plane : json.at("planes").elements()) truth.planes.push_back(planeFrom(plane));
  for (const ReadJson& sphere : json.at("spheres").elements())
    truth.spheres.push_back({placeFrom(sphere.at("center")), sphere.at("radius").number()});
  if (truth.planes.empty() && truth.spheres.empty()) throw std::runtime_error("it tells of no plane and of no sphere to measure against");
  return truth;
}

std::int32_t signedFrom(const ReadJson& json) { return static_cast<std::int32_t>(json.integer(INT32_MIN, INT32_MAX)); }

std::uint32_t unsignedFrom(const ReadJson& json) { return static_cast<std::uint32_t>(json.integer(0, UINT32_MAX)); }

std::optional<Region> regionFrom(const ReadJson& json) {
  if (json.isNull()) return {};
  const auto number = [&](const char* name) { return unsignedFrom(json.at(name)); };
  return Region{number("x"), number("y"), number("width"), number("height")};
}

StoredScan scanFrom(const ReadJson& json) {
  requireFormat(json, "fringix-scan");
  const ReadJson plan = json.at("plan");
  StoredScan stored;
  for (const ReadJson& channel : json.at("channels").elements()) stored.channels.push_back(unsignedFrom(channel));
  if (stored.channels.empty()) throw std::runtime_error("it names no channel");
  for (const ReadJson& exposure : json.at("exposuresInUs").elements()) stored.exposures.push_back(signedFrom(exposure));
  stored.roi = regionFrom(json.at("roi"));
  stored.generated = plan.at("generated").truth();
  stored.plan.method = plan.at("method").text() == "three frequencies" ? SLSCAN_THREE_FREQUENCIES : SLSCAN_GRAY_AND_PHASE;
  stored.plan.projectorWidth = signedFrom(plan.at("projectorWidth"));
  stored.plan.period = signedFrom(plan.at("period"));
  stored.plan.steps = signedFrom(plan.at("steps"));
  return stored;
}

template <class Read>
auto parsed(const char* name, std::string_view text, Read read) {
  try {
    return read(ReadJson(text));
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{} cannot be used: {}", name, error.what()));
  }
}

}  // namespace

Truth readTruth(std::string_view text) { return parsed("truth.json", text, truthFrom); }

StoredScan readStoredScan(std::string_view text) { return parsed("scan.json", text, scanFrom); }

}  // namespace fringix::tool
