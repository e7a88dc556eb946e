#include "head/optics/light_map.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

#include "head/optics/scene.h"

namespace fringix::head {

namespace {

constexpr double fullLightDistance = 600;  // from the projector, in millimetres: here a white surface gives back all that it gets
constexpr double sameSurface = 1e-3;       // in millimetres

std::size_t pixelCount(Size size) { return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height); }

class MapMaker {
 public:
  MapMaker(Size camera, Size projector, std::uint32_t channel)
      : camera_(camera),
        projector_(projector),
        cameraOptics_(cameraOptics(camera, channel)),
        projectorOptics_(projectorOptics(projector)) {}

  LightMap make() {
    map_.source.assign(pixelCount(camera_), static_cast<std::uint32_t>(pixelCount(projector_)));
    map_.reflectance.assign(pixelCount(camera_), 0);
    std::size_t pixel = 0;
    for (std::int32_t y = 0; y < camera_.height; ++y) {
      for (std::int32_t x = 0; x < camera_.width; ++x) light(pixel++, {x + 0.5, y + 0.5});
    }
    return std::move(map_);
  }

 private:
  void light(std::size_t pixel, ImagePoint place) {
    const auto seen = firstSurface(cameraOptics_.position(), cameraOptics_.directionThrough(place));
    if (!seen) return;
    const auto lamp = projectorOptics_.project(seen->point);
    if (!lamp || inShadow(*seen)) return;
    map_.source[pixel] =
        static_cast<std::uint32_t>(lamp->y) * static_cast<std::uint32_t>(projector_.width) + static_cast<std::uint32_t>(lamp->x);
    map_.reflectance[pixel] = static_cast<std::uint16_t>(std::lround(reflected(*seen) * (1 << LightMap::reflectanceBits)));
  }

  bool inShadow(const SurfacePoint& seen) const {
    const Vector ray = seen.point - projectorOptics_.position();
    const auto lit = firstSurface(projectorOptics_.position(), unit(ray));
    return !lit || lit->distance < length(ray) - sameSurface;
  }

  double reflected(const SurfacePoint& seen) const {
    const Vector ray = seen.point - projectorOptics_.position();
    const double distance = length(ray);
    const double cosine = std::max(0.0, -dot(seen.normal, ray) / distance);
    const double spread = fullLightDistance / distance;
    return std::min(1.0, seen.albedo * cosine * spread * spread);
  }

  Size camera_;
  Size projector_;
  Pinhole cameraOptics_;
  Pinhole projectorOptics_;
  LightMap map_;
};

}  // namespace

std::shared_ptr<const LightMap> lightMapFor(Size camera, Size projector, std::uint32_t channel) {
  using Key = std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::uint32_t>;
  static std::mutex mutex;
  static std::map<Key, std::weak_ptr<const LightMap>> maps;
  const std::lock_guard lock(mutex);
  auto& shared = maps[{camera.width, camera.height, projector.width, projector.height, channel}];
  auto map = shared.lock();
  if (map == nullptr) shared = map = std::make_shared<const LightMap>(MapMaker(camera, projector, channel).make());
  return map;
}

}  // namespace fringix::head
