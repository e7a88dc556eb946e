// Pictures of a scene as a head would take them, by code of the tests' own: nothing of it is shared with what is tested.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <vector>

#include "scan/calibration.h"
#include "scan/plan.h"

namespace fringix::scan::test {

struct Ray {
  Vector origin;
  Vector direction;
};

// The distance to what a ray of the reference frame hits, in lengths of its direction, or nothing.
using Scene = std::function<std::optional<double>(const Ray&)>;

Scene plane(Vector normal, double distance);  // of the points with normal * p = distance
Scene sphere(Vector centre, double radius);
Scene nearestOf(Scene one, Scene other);

struct Light {
  double dark = 10;     // level of the black picture
  double bright = 210;  // of the white picture
  double noise = 0;     // standard deviation in grey levels
  double variancePerLevel = 0;
  double blur = 0.7;  // of the projector, standard deviation in columns
  double gamma = 1;
  unsigned seed = 1;
};

// What is true of a pixel.
struct Truth {
  bool lit = false;
  Vector point{};
  double column = 0;
  double alongRay = 0;  // what the point moves along the camera's ray for one column, in mm
};

class Rendering {
 public:
  Rendering(const Calibration& calibration, std::size_t camera, const Scene& scene);

  const Truth& truth(std::size_t pixel) const { return truth_[pixel]; }
  std::size_t pixels() const { return truth_.size(); }
  std::vector<std::uint8_t> picture(const Plan& plan, std::size_t number, const Light& light) const;
  std::vector<std::vector<std::uint8_t>> pictures(const Plan& plan, const Light& light) const;

 private:
  Truth truthOf(const Calibration& calibration, std::size_t camera, const Scene& scene, double column, double row) const;

  std::vector<Truth> truth_;
};

// A place of the picture to the ray of the reference frame that it shows, and a point to the place at which it is shown.
Ray rayThrough(const Optics& optics, double column, double row);
Place shownAt(const Optics& optics, const Vector& point);

Matrix turned(double aboutX, double aboutY, double aboutZ);  // in radians

// A head with 400 mm to its scene, 150 mm between camera and projector, and distortion on both sides.
Calibration smallHead(std::int32_t cameraWidth = 320, std::int32_t cameraHeight = 240, std::int32_t projectorWidth = 1280);
Calibration randomHead(std::mt19937& chance);

std::vector<const std::uint8_t*> pointersTo(const std::vector<std::vector<std::uint8_t>>& pictures);

}  // namespace fringix::scan::test
