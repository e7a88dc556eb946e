// A head's calibration and truth as a stranger reads them from its data blocks, with the formulas of the documentation written anew.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "head/model/head_model.h"
#include "support/json.h"

namespace fringix::head {

using Triple = std::array<double, 3>;

inline double product(const Triple& a, const Triple& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Triple along(const Triple& origin, const Triple& direction, double distance) {
  return {origin[0] + distance * direction[0], origin[1] + distance * direction[1], origin[2] + distance * direction[2]};
}
inline Triple minus(const Triple& a, const Triple& b) { return along(a, b, -1); }
double lengthOf(const Triple& a);

test::Json blockOf(HeadModel& model, const std::string& name);

Triple tripleAt(const test::Json& json, const std::string& place);

// A camera or projector of calibration.json.
struct ToldDevice {
  ToldDevice(const test::Json& calibration, const std::string& place);

  std::array<double, 2> pixelOf(const Triple& point) const;  // of the frame of camera 0
  Triple directionOf(double column, double row) const;       // of length 1, from `position`
  double depthOf(const Triple& point) const { return inDevice(point)[2]; }
  bool shows(const Triple& point, double margin) const;  // at least that many pixels inside its image's border

  double width, height, fx, fy, cx, cy;
  std::array<double, 5> k;
  std::array<Triple, 3> rotation;
  Triple translation;
  Triple position;

 private:
  Triple inDevice(const Triple& point) const;
  std::array<double, 2> bend(double x, double y) const;
};

struct ToldPlane {
  std::string name;
  Triple normal;
  double distance;
  std::vector<Triple> corners;  // none: it is unbounded
};

struct ToldSphere {
  std::string name;
  Triple center;
  double radius;
};

struct Truth {
  explicit Truth(const test::Json& json);

  double distanceTo(const Triple& point) const;  // of a point to the nearest surface

  std::vector<ToldPlane> planes;
  std::vector<ToldSphere> spheres;
};

}  // namespace fringix::head
