// What leaves the projector: at first white light.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "head/optics/pattern.h"

namespace fringix::head {

class Projector {
 public:
  explicit Projector(Size size) : size_(size) {}

  // A pattern smaller than the projector stands in its top left corner, in black surroundings; null is white light.
  void show(std::shared_ptr<const Pattern> pattern);

  void switchOn(bool on);  // its mirrors; without them it is dark
  bool isOn() const { return on_; }

  // How much light each pixel lets through, by rows: 0 is none, 255 all. An empty mask lets all light through.
  void setMask(std::vector<std::uint8_t> mask);
  bool isMasked() const { return !mask_.empty(); }

  // The light of each pixel by rows, and after the last one a 0, for what no pixel lights. A colour counts as its mean.
  const std::vector<std::uint8_t>& light();
  std::uint64_t lightVersion() const { return version_; }  // another one after every change

 private:
  void change();
  void computeLight();
  void showPattern();
  void applyMask();

  Size size_;
  std::shared_ptr<const Pattern> shown_;
  std::vector<std::uint8_t> mask_;
  bool on_ = true;
  std::vector<std::uint8_t> light_;  // empty until asked for
  std::uint64_t version_ = 1;
};

}  // namespace fringix::head
