#include "head/optics/passing_ball.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "head/geometry/mount.h"
#include "head/optics/blur.h"

namespace fringix::head {

namespace {

constexpr double ballRadius = 8;
constexpr double ballAlbedo = 0.5;
constexpr double ballDepth = -90;  // in the measuring volume
constexpr double halfWay = 100;    // to each side of the volume's middle
constexpr double mostHeight = 60;

// To and fro between 0 and `width`, at the speed 1.
double swing(double way, double width) {
  const double part = std::fmod(way, 2 * width);
  return part < width ? part : 2 * width - part;
}

// A part of an image.
struct Frame {
  double left = std::numeric_limits<double>::infinity();
  double top = left;
  double right = -left;
  double bottom = -left;

  void add(const ImagePoint& place) {
    left = std::min(left, place.x);
    right = std::max(right, place.x);
    top = std::min(top, place.y);
    bottom = std::max(bottom, place.y);
  }

  bool containsX(double x) const { return x >= left && x <= right; }
  bool containsY(double y) const { return y >= top && y <= bottom; }
};

// Holds the image of a sphere: that of the cube around it, and what the lens may bend its edges by.
Frame frameOf(const Sphere& sphere, const Optics& optics) {
  constexpr double reserve = 2;
  Frame frame;
  for (int corner = 0; corner < 8; ++corner) {
    const Vector offset{(corner & 1) != 0 ? 1.0 : -1.0, (corner & 2) != 0 ? 1.0 : -1.0, (corner & 4) != 0 ? 1.0 : -1.0};
    const Vector seen = optics.pose()(sphere.centre + offset * sphere.radius);
    frame.add(optics.lens().imageOf({seen.x / seen.z, seen.y / seen.z}));
  }
  return {frame.left - reserve, frame.top - reserve, frame.right + reserve, frame.bottom + reserve};
}

}  // namespace

Sphere passingBall(const HeadSettings& settings, std::uint64_t moment) {
  std::mt19937_64 generator(settings.noiseSeed);
  constexpr double range = static_cast<double>(std::mt19937_64::max());
  const double start = static_cast<double>(generator()) / range * 4 * halfWay;
  const double height = (static_cast<double>(generator()) / range * 2 - 1) * mostHeight;
  const double way = start + static_cast<double>(moment) * settings.motion;
  return {"passing ball", measuringVolume()({swing(way, 2 * halfWay) - halfWay, height, ballDepth}), ballRadius, ballAlbedo};
}

std::vector<std::size_t> pixelsChangedBy(const Sphere& ball, const LightMap& map) {
  const Frame covered = frameOf(ball, map.view.camera());
  const Frame shaded = frameOf(ball, map.view.projector());
  const Size lamp = map.view.projector().size();
  const auto inShade = [&](std::size_t pixel) {
    return map.reflectance[pixel] > 0 && shaded.containsX(BlurredPlace(map.column[pixel], lamp.width).place()) &&
           shaded.containsY(BlurredPlace(map.row[pixel], lamp.height).place());
  };
  const Size camera = map.view.camera().size();
  std::vector<std::size_t> changed;
  std::size_t pixel = 0;
  for (std::int32_t y = 0; y < camera.height; ++y) {
    for (std::int32_t x = 0; x < camera.width; ++x, ++pixel) {
      if ((covered.containsY(y) && covered.containsX(x)) || inShade(pixel)) changed.push_back(pixel);
    }
  }
  return changed;
}

}  // namespace fringix::head
