// What one pixel of a camera sees: exact rays from the pixel's centre to the scene, and from there to the projector.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "head/geometry/optics.h"
#include "head/scene/scene.h"
#include "head/settings/head_settings.h"

namespace fringix::head {

// The light that a camera pixel gets: where it left the projector, and how much of it arrives.
struct LitPixel {
  static constexpr double fullReflectance = 1 << 15;

  std::uint32_t column = 0;       // as BlurredPlace encodes it
  std::uint32_t row = 0;          // likewise
  std::uint16_t reflectance = 0;  // in shares of `fullReflectance`; 0: no light
};

class View {
 public:
  View(const HeadSettings& settings, std::uint32_t channel, std::shared_ptr<const Scene> scene);

  const Optics& camera() const { return camera_; }
  const Optics& projector() const { return projector_; }
  const Scene& scene() const { return *scene_; }

  // `passing` is something that is there for the moment only; null for nothing.
  LitPixel look(const ImagePoint& place, const Sphere* passing = nullptr) const;

 private:
  std::optional<SurfacePoint> firstSurface(const Vector& origin, const Vector& direction, const Sphere* passing) const;
  bool inShadow(const SurfacePoint& seen, const Sphere* passing) const;
  double reflected(const SurfacePoint& seen) const;
  double gloss(const SurfacePoint& seen, const Vector& toLamp) const;
  double blurAt(const Vector& point) const;
  void findShinyPlace();

  Optics camera_;
  Optics projector_;
  std::shared_ptr<const Scene> scene_;
  double defocus_;
  double shine_;
  Vector shinyPlace_;
};

}  // namespace fringix::head
