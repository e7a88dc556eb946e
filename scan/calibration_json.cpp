#include "calibration_json.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "failure.h"

namespace fringix::scan {

namespace {

using Json = nlohmann::ordered_json;

[[noreturn]] void refuse(const std::string& text) { throw Failure(Status::badCalibration, "calibration: " + text); }

// A member of an object together with the way to it, for messages such as "cameras[0].fx is missing".
class Member {
 public:
  Member(const Json& value, std::string path) : value_(value), path_(std::move(path)) {}

  Member operator[](const char* name) const {
    if (!value_.is_object()) refuse(path_ + " is no object");
    const auto found = value_.find(name);
    const std::string path = path_.empty() ? name : path_ + "." + name;
    if (found == value_.end()) refuse(path + " is missing");
    return {*found, path};
  }
  Member operator[](std::size_t index) const { return {value_[index], path_ + "[" + std::to_string(index) + "]"}; }

  std::size_t size() const {
    if (!value_.is_array()) refuse(path_ + " is no array");
    return value_.size();
  }
  void requireSize(std::size_t size) const {
    if (this->size() != size) refuse(path_ + " has " + std::to_string(value_.size()) + " entries; " + std::to_string(size) + " are needed");
  }
  double number() const {
    if (!value_.is_number()) refuse(path_ + " is no number");
    return value_.get<double>();
  }
  std::int32_t integer() const {
    if (!value_.is_number_integer()) refuse(path_ + " is no integer");
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const bool fits = value_.is_number_unsigned() ? value_.get<std::uint64_t>() <= static_cast<std::uint64_t>(most)
                                                  : value_.get<std::int64_t>() >= -most && value_.get<std::int64_t>() <= most;
    if (!fits) refuse(path_ + " does not fit into 32 bits");
    return value_.get<std::int32_t>();
  }
  std::string text() const {
    if (!value_.is_string()) refuse(path_ + " is no text");
    return value_.get<std::string>();
  }
  Vector vector() const {
    requireSize(3);
    return {(*this)[std::size_t{0}].number(), (*this)[1].number(), (*this)[2].number()};
  }

 private:
  const Json& value_;
  std::string path_;
};

Distortion distortionFrom(const Member& json) {
  json.requireSize(5);
  return {json[std::size_t{0}].number(), json[1].number(), json[2].number(), json[3].number(), json[4].number()};
}

Matrix matrixFrom(const Member& json) {
  json.requireSize(3);
  return {json[std::size_t{0}].vector(), json[1].vector(), json[2].vector()};
}

Optics opticsFrom(const Member& json) {
  Optics optics;
  optics.width = json["width"].integer();
  optics.height = json["height"].integer();
  optics.fx = json["fx"].number();
  optics.fy = json["fy"].number();
  optics.cx = json["cx"].number();
  optics.cy = json["cy"].number();
  optics.distortion = distortionFrom(json["distortion"]);
  optics.rotation = matrixFrom(json["rotation"]);
  optics.translation = json["translation"].vector();
  return optics;
}

void checkKind(const Member& json) {
  const std::string format = json["format"].text();
  if (format != "fringix-calibration") refuse("the format is \"" + format + "\", not \"fringix-calibration\"");
  const std::int32_t version = json["version"].integer();
  if (version != 1) refuse("version " + std::to_string(version) + " is not known here, only version 1");
  const std::string unit = json["unit"].text();
  if (unit != "mm") refuse("the unit is \"" + unit + "\"; it has to be \"mm\"");
}

// A message of the parser without its own prefix.
std::string reasonOf(const nlohmann::json::exception& error) {
  const std::string text = error.what();
  const auto end = text.find("] ");
  return end == std::string::npos ? text : text.substr(end + 2);
}

Json parsed(std::string_view text) {
  try {
    return Json::parse(text);
  } catch (const nlohmann::json::exception& error) {
    refuse("the text is no JSON: " + reasonOf(error));
  }
}

Json jsonOf(const Optics& optics) {
  const Distortion& lens = optics.distortion;
  return {{"width", optics.width},
          {"height", optics.height},
          {"fx", optics.fx},
          {"fy", optics.fy},
          {"cx", optics.cx},
          {"cy", optics.cy},
          {"distortion", {lens.k1, lens.k2, lens.p1, lens.p2, lens.k3}},
          {"rotation", optics.rotation},
          {"translation", optics.translation}};
}

}  // namespace

Calibration calibrationFrom(std::string_view text) {
  const Json json = parsed(text);
  const Member root(json, "");
  checkKind(root);
  Calibration calibration;
  calibration.serial = root["serial"].integer();
  calibration.date = root["date"].text();
  const Member cameras = root["cameras"];
  if (cameras.size() > mostCameras) refuse(std::to_string(cameras.size()) + " cameras; 1 to 4 are possible");
  for (std::size_t i = 0; i < cameras.size(); ++i) calibration.cameras.push_back(opticsFrom(cameras[i]));
  calibration.projector = opticsFrom(root["projector"]);
  check(calibration);
  return calibration;
}

std::string textOf(const Calibration& calibration) {
  Json cameras = Json::array();
  for (const Optics& camera : calibration.cameras) cameras.push_back(jsonOf(camera));
  const Json json = {{"format", "fringix-calibration"},
                     {"version", 1},
                     {"unit", "mm"},
                     {"serial", calibration.serial},
                     {"date", calibration.date},
                     {"cameras", cameras},
                     {"projector", jsonOf(calibration.projector)}};
  return json.dump(2) + "\n";
}

}  // namespace fringix::scan
