// A camera or projector: its lens, and where it stands.
#pragma once

#include <optional>

#include "head/geometry/lens.h"
#include "head/geometry/pose.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

class Optics {
 public:
  // `pose` takes points of the frame of camera 0 into the device's own frame, whose z axis it looks along.
  Optics(Size size, const Lens& lens, const Pose& pose);

  Size size() const { return size_; }
  const Lens& lens() const { return lens_; }
  const Pose& pose() const { return pose_; }

  const Vector& position() const { return position_; }           // in the frame of camera 0, as all that follows
  Vector directionThrough(const ImagePoint& place) const;        // of length 1
  double depth(const Vector& point) const;                       // along the optical axis
  std::optional<ImagePoint> project(const Vector& point) const;  // empty for what lies behind or outside the image
  bool isInside(const ImagePoint& place) const;                  // within the area of the image's pixels

 private:
  Size size_;
  Lens lens_;
  Pose pose_;
  Rotation back_;
  Vector position_;
  double widest_;  // the square of the largest slope in the image; far outside, a polynomial would bend rays back into it
};

}  // namespace fringix::head
