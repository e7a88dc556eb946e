// The projector: at first it shines white.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "head/optics/light.h"
#include "head/optics/pattern.h"

namespace fringix::head {

class Projector {
 public:
  Projector(Size size, double gamma);  // a level L gives light as (L / 255) ^ gamma

  // A pattern smaller than the projector stands in its top left corner, in black surroundings; null is white light.
  void show(std::shared_ptr<const Pattern> pattern);

  void switchOn(bool on);  // its mirrors; without them it is dark
  bool isOn() const { return on_; }

  // How much light each pixel lets through, by rows: 0 is none, 255 all. An empty mask lets all light through.
  void setMask(std::vector<std::uint8_t> mask);
  bool isMasked() const { return !mask_.empty(); }

  const Light& light();                                    // a colour counts as its mean
  std::uint64_t lightVersion() const { return version_; }  // another one after every change

 private:
  void change();
  void computeLight();
  void showPattern();
  void applyMask();
  void spread();
  void convert(const Colour* from, std::size_t count, std::size_t step, Brightness* to) const;

  Size size_;
  std::array<Brightness, 256> brightness_;  // of each level
  std::shared_ptr<const Pattern> shown_;
  std::vector<std::uint8_t> mask_;
  bool on_ = true;
  Light light_;  // without values until asked for
  std::uint64_t version_ = 1;
};

}  // namespace fringix::head
