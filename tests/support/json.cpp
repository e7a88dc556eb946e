#include "support/json.h"

#include <nlohmann/json.hpp>
#include <ostream>

namespace fringix::test {
namespace {

nlohmann::json parsed(const Json& json) { return nlohmann::json::parse(json.dump()); }

nlohmann::json::json_pointer pointer(const std::string& place) { return nlohmann::json::json_pointer(place); }

}  // namespace

Json::Json(const std::string& text) : canonical_(nlohmann::json::parse(text).dump()) {}

Json Json::at(const std::string& place) const { return Json(parsed(*this).at(pointer(place)).dump()); }

Json Json::without(const std::string& place) const {
  nlohmann::json document = parsed(*this);
  const auto member = pointer(place);
  nlohmann::json& holder = document.at(member.parent_pointer());
  holder.is_array() ? holder.erase(std::stoul(member.back())) : static_cast<void>(holder.erase(member.back()));
  return Json(document.dump());
}

bool Json::has(const std::string& place) const { return parsed(*this).contains(pointer(place)); }

std::vector<std::string> Json::names() const {
  const nlohmann::json document = parsed(*this);
  std::vector<std::string> names;
  for (const auto& member : document.items()) names.push_back(member.key());
  return names;
}

std::size_t Json::size() const { return parsed(*this).size(); }

double Json::number() const { return parsed(*this).get<double>(); }

std::string Json::text() const { return parsed(*this).get<std::string>(); }

std::ostream& operator<<(std::ostream& stream, const Json& json) { return stream << json.dump(); }

}  // namespace fringix::test
