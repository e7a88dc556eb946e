// Points in space (millimetres; x to the right, y down, z away from the projector) and pinhole optics.
#pragma once

#include <cmath>
#include <optional>

#include "head/settings/head_settings.h"

namespace fringix::head {

struct Vector {
  double x = 0;
  double y = 0;
  double z = 0;
};

inline Vector operator+(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector operator*(const Vector& a, double factor) { return {a.x * factor, a.y * factor, a.z * factor}; }
inline double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector cross(const Vector& a, const Vector& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
inline double length(const Vector& a) { return std::sqrt(dot(a, a)); }
inline Vector unit(const Vector& a) { return a * (1 / length(a)); }

// A place in an image, in pixels from its top left corner: the centre of the first pixel is 0.5, 0.5.
struct ImagePoint {
  double x = 0;
  double y = 0;
};

// A camera or projector without distortion; its principal point is the middle of the image.
class Pinhole {
 public:
  // Looks from `position` to `target`, with the image's rows level; `focalLength` in pixels.
  Pinhole(Size size, double focalLength, Vector position, Vector target);

  const Vector& position() const { return position_; }
  Vector directionThrough(ImagePoint pixel) const;        // of length 1
  std::optional<ImagePoint> project(Vector point) const;  // empty for what lies behind or outside the image

 private:
  Size size_;
  double focalLength_;
  Vector position_;
  Vector forward_;
  Vector right_;
  Vector down_;
};

}  // namespace fringix::head
