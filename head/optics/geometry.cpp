#include "head/optics/geometry.h"

namespace fringix::head {

namespace {

constexpr Vector downwards{0, 1, 0};

}  // namespace

Pinhole::Pinhole(Size size, double focalLength, Vector position, Vector target)
    : size_(size),
      focalLength_(focalLength),
      position_(position),
      forward_(unit(target - position)),
      right_(unit(cross(downwards, forward_))),
      down_(cross(forward_, right_)) {}

Vector Pinhole::directionThrough(ImagePoint pixel) const {
  const double x = pixel.x - size_.width / 2.0;
  const double y = pixel.y - size_.height / 2.0;
  return unit(right_ * x + down_ * y + forward_ * focalLength_);
}

std::optional<ImagePoint> Pinhole::project(Vector point) const {
  const Vector offset = point - position_;
  const double depth = dot(offset, forward_);
  if (depth <= 0) return std::nullopt;
  const ImagePoint image{size_.width / 2.0 + focalLength_ * dot(offset, right_) / depth,
                         size_.height / 2.0 + focalLength_ * dot(offset, down_) / depth};
  const bool inside = image.x >= 0 && image.y >= 0 && image.x < size_.width && image.y < size_.height;
  return inside ? std::optional(image) : std::nullopt;
}

}  // namespace fringix::head
