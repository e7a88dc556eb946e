#include "head/geometry/mount.h"

#include <algorithm>

namespace fringix::head {

namespace {

constexpr double workingDistance = 500;
constexpr double base = 150;  // from the projector to each camera

// A lens for images of any size: focal lengths and offsets of the principal point are shares of the image's width, or of 1.25 times
// its height when it is a tall one.
struct LensKind {
  double fx;
  double fy;
  double offsetX;
  double offsetY;
  std::array<double, 5> distortion;
};

constexpr LensKind projectorLens{1.1012, 1.1008, 0.0031, -0.0042, {0.062, -0.051, 0.0006, -0.0004, 0.009}};
constexpr LensKind leftLens{1.4021, 1.4029, 0.0046, -0.0027, {-0.118, 0.094, 0.0004, -0.0003, -0.021}};
constexpr LensKind rightLens{1.4007, 1.4002, -0.0035, 0.0039, {-0.121, 0.089, -0.0002, 0.0005, -0.017}};

Lens lensFor(Size size, const LensKind& kind) {
  const double scale = std::max(1.0 * size.width, 1.25 * size.height);
  return {kind.fx * scale, kind.fy * scale, (size.width - 1) / 2.0 + kind.offsetX * scale, (size.height - 1) / 2.0 + kind.offsetY * scale,
          kind.distortion};
}

// Into the frame of a device at `position` that looks at the middle of the measuring volume, its rows at an angle to the level. Both
// places are in the head's frame: the projector at the origin, looking along z.
Pose lookingFrom(const Vector& position, double roll) {
  const Vector forward = unit(Vector{0, 0, workingDistance} - position);
  const Vector right = unit(cross({0, 1, 0}, forward));
  const Rotation rotation = turnAboutZ(roll) * Rotation{right, cross(forward, right), forward};
  return {rotation, rotation * position * -1};
}

// From the head's frame. The second camera and the projector are mounted as exactly as a workshop does it.
Pose leftMount() { return lookingFrom({-base, 0, 0}, 0); }
Pose rightMount() { return lookingFrom({base, 0.7, -0.4}, 0.35); }
Pose projectorMount() { return lookingFrom({0, -1.2, 0}, -0.25); }

}  // namespace

Optics projectorOptics(Size projector) { return {projector, lensFor(projector, projectorLens), projectorMount() * inverse(leftMount())}; }

Optics cameraOptics(Size camera, std::uint32_t channel) {
  if (channel == 0) return {camera, lensFor(camera, leftLens), {}};
  return {camera, lensFor(camera, rightLens), rightMount() * inverse(leftMount())};
}

Pose measuringVolume() { return leftMount() * Pose{{}, {0, 0, workingDistance}}; }

}  // namespace fringix::head
