#include "head/optics/view.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "head/geometry/mount.h"
#include "head/optics/blur.h"

namespace fringix::head {

namespace {

constexpr double focusDistance = 500;      // before the projector; here a white surface gives back all the light that it gets
constexpr double defocusReference = 100;   // the setting is the blur this much behind the focus
constexpr double sameSurface = 1e-3;       // in millimetres
constexpr double shinyRadius = 30;         // of the shiny patch
constexpr double lobe = 60;                // the exponent of its gloss
constexpr double mostReflectance = 65535;  // of what LitPixel holds

double mirrorCosine(const SurfacePoint& seen, const Vector& toLamp, const Vector& toCamera) {
  return dot(seen.normal, unit(toLamp + toCamera));
}

}  // namespace

View::View(const HeadSettings& settings, std::uint32_t channel, std::shared_ptr<const Scene> scene)
    : camera_(cameraOptics(settings.camera, channel)),
      projector_(projectorOptics(settings.projector)),
      scene_(std::move(scene)),
      defocus_(settings.defocus),
      shine_(settings.shine) {
  if (shine_ > 0) findShinyPlace();
}

LitPixel View::look(const ImagePoint& place, const Sphere* passing) const {
  const auto seen = firstSurface(camera_.position(), camera_.directionThrough(place), passing);
  if (!seen) return {};
  const auto lamp = projector_.project(seen->point);
  if (!lamp || inShadow(*seen, passing)) return {};
  const std::uint32_t level = blurLevelFor(blurAt(seen->point));
  const double reflectance = std::min(reflected(*seen) * LitPixel::fullReflectance, mostReflectance);
  return {BlurredPlace::encode(lamp->x, level, projector_.size().width), BlurredPlace::encode(lamp->y, level, projector_.size().height),
          static_cast<std::uint16_t>(std::lround(reflectance))};
}

std::optional<SurfacePoint> View::firstSurface(const Vector& origin, const Vector& direction, const Sphere* passing) const {
  auto first = scene_->firstSurface(origin, direction);
  if (passing == nullptr) return first;
  const auto hit = meet(*passing, origin, direction);
  return hit && (!first || hit->distance < first->distance) ? hit : first;
}

bool View::inShadow(const SurfacePoint& seen, const Sphere* passing) const {
  const Vector ray = seen.point - projector_.position();
  const auto lit = firstSurface(projector_.position(), unit(ray), passing);
  return lit && lit->distance < length(ray) - sameSurface;
}

double View::reflected(const SurfacePoint& seen) const {
  const Vector toLamp = projector_.position() - seen.point;
  const double distance = length(toLamp);
  const double cosine = dot(seen.normal, toLamp) / distance;
  if (cosine <= 0) return 0;
  const double spread = focusDistance / distance;
  return (seen.albedo * cosine + gloss(seen, toLamp)) * spread * spread;
}

double View::gloss(const SurfacePoint& seen, const Vector& toLamp) const {
  if (shine_ <= 0 || length(seen.point - shinyPlace_) > shinyRadius) return 0;
  const double cosine = mirrorCosine(seen, unit(toLamp), unit(camera_.position() - seen.point));
  return cosine <= 0 ? 0 : shine_ * std::pow(cosine, lobe);
}

// A lens draws a point out of focus as a disc whose size grows with the difference of the inverse distances.
double View::blurAt(const Vector& point) const {
  const double off = std::abs(1 / projector_.depth(point) - 1 / focusDistance);
  const double reference = 1 / focusDistance - 1 / (focusDistance + defocusReference);
  const double ofDistance = defocus_ * off / reference;
  return std::sqrt(blurOf(0) * blurOf(0) + ofDistance * ofDistance);
}

// Where the scene mirrors the projector into camera 0 best, on a coarse raster of that camera's picture.
void View::findShinyPlace() {
  constexpr int raster = 64;
  const Optics camera = cameraOptics(camera_.size(), 0);
  double best = -1;
  for (int i = 0; i < raster * raster; ++i) {
    const int row = i / raster;
    const ImagePoint place{(i % raster + 0.5) / raster * camera.size().width - 0.5, (row + 0.5) / raster * camera.size().height - 0.5};
    const auto seen = scene_->firstSurface(camera.position(), camera.directionThrough(place));
    if (!seen || !projector_.project(seen->point) || inShadow(*seen, nullptr)) continue;
    const double cosine = mirrorCosine(*seen, unit(projector_.position() - seen->point), unit(camera.position() - seen->point));
    if (cosine > best) best = cosine, shinyPlace_ = seen->point;
  }
}

}  // namespace fringix::head
