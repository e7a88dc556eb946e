#include "calibration_json.h"

#include <array>
#include <limits>
#include <stdexcept>

#include "failure.h"
#include "json/json_value.h"

namespace fringix::scan {

namespace {

using Kind = JsonValue::Kind;

[[noreturn]] void refuse(const std::string& text) { throw Failure(Status::badCalibration, "calibration: " + text); }

// A member of an object together with the way to it, for messages such as "cameras[0].fx is missing".
class Member {
 public:
  Member(const JsonValue& value, std::string path) : value_(value), path_(std::move(path)) {}

  Member operator[](const char* name) const {
    if (value_.kind != Kind::object) refuse(path_ + " is no object");
    const JsonValue* const found = value_.find(name);
    const std::string path = path_.empty() ? name : path_ + "." + name;
    if (found == nullptr) refuse(path + " is missing");
    return {*found, path};
  }
  Member operator[](std::size_t index) const { return {value_.values[index], path_ + "[" + std::to_string(index) + "]"}; }

  std::size_t size() const {
    if (value_.kind != Kind::array) refuse(path_ + " is no array");
    return value_.values.size();
  }
  void requireSize(std::size_t size) const {
    if (this->size() != size) refuse(path_ + " has " + std::to_string(this->size()) + " entries; " + std::to_string(size) + " are needed");
  }
  double number() const {
    if (value_.kind != Kind::number) refuse(path_ + " is no number");
    return value_.number;
  }
  std::int32_t integer() const {
    if (value_.kind != Kind::number || !value_.integer) refuse(path_ + " is no integer");
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (*value_.integer < -most || *value_.integer > most) refuse(path_ + " does not fit into 32 bits");
    return static_cast<std::int32_t>(*value_.integer);
  }
  std::string text() const {
    if (value_.kind != Kind::text) refuse(path_ + " is no text");
    return value_.text;
  }
  Vector vector() const {
    requireSize(3);
    return {(*this)[std::size_t{0}].number(), (*this)[1].number(), (*this)[2].number()};
  }

 private:
  const JsonValue& value_;
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

JsonValue parsed(std::string_view text) {
  try {
    return parseJson(text);
  } catch (const std::runtime_error& error) {
    refuse("the text is no JSON: " + std::string(error.what()));
  }
}

JsonValue arrayOf(const Matrix& matrix) {
  std::vector<JsonValue> rows;
  for (const Vector& row : matrix) rows.push_back(JsonValue::arrayOf(row));
  return JsonValue::arrayOf(rows);
}

JsonValue jsonOf(const Optics& optics) {
  const Distortion& lens = optics.distortion;
  return {{"width", "height", "fx", "fy", "cx", "cy", "distortion", "rotation", "translation"},
          {optics.width, optics.height, optics.fx, optics.fy, optics.cx, optics.cy,
           JsonValue::arrayOf(std::array{lens.k1, lens.k2, lens.p1, lens.p2, lens.k3}), arrayOf(optics.rotation),
           JsonValue::arrayOf(optics.translation)}};
}

}  // namespace

Calibration calibrationFrom(std::string_view text) {
  const JsonValue json = parsed(text);
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
  std::vector<JsonValue> cameras;
  for (const Optics& camera : calibration.cameras) cameras.push_back(jsonOf(camera));
  const JsonValue json(
      {"format", "version", "unit", "serial", "date", "cameras", "projector"},
      {"fringix-calibration", 1, "mm", calibration.serial, calibration.date, JsonValue::arrayOf(cameras), jsonOf(calibration.projector)});
  return jsonLines(json) + "\n";
}

}  // namespace fringix::scan
