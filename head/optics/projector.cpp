#include "head/optics/projector.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace fringix::head {

namespace {

constexpr int fullLevel = 255;

std::size_t asIndex(std::int32_t number) { return static_cast<std::size_t>(number); }

std::uint8_t mean(const Colour& colour) { return static_cast<std::uint8_t>((colour.red + colour.green + colour.blue + 1) / 3); }

Brightness share(std::uint8_t part, Brightness light) { return static_cast<Brightness>((part * light + fullLevel / 2) / fullLevel); }

// All rows are alike.
bool isOfColumns(const Pattern& pattern) {
  const std::size_t bytes = asIndex(pattern.size.width) * sizeof(Colour);
  for (std::int32_t y = 1; y < pattern.size.height; ++y) {
    if (std::memcmp(pattern.row(0), pattern.row(y), bytes) != 0) return false;
  }
  return true;
}

// Each row has one colour: it is the same as itself, moved by a pixel.
bool isOfRows(const Pattern& pattern) {
  const std::size_t bytes = asIndex(pattern.size.width - 1) * sizeof(Colour);
  for (std::int32_t y = 0; y < pattern.size.height; ++y) {
    if (std::memcmp(pattern.row(y), pattern.row(y) + 1, bytes) != 0) return false;
  }
  return true;
}

}  // namespace

Projector::Projector(Size size, double gamma) : size_(size) {
  for (std::size_t level = 0; level < brightness_.size(); ++level) {
    const double light = std::pow(static_cast<double>(level) / fullLevel, gamma);
    brightness_[level] = static_cast<Brightness>(std::lround(light * fullLevel * 256));
  }
}

void Projector::show(std::shared_ptr<const Pattern> pattern) {
  shown_ = std::move(pattern);
  change();
}

void Projector::switchOn(bool on) {
  on_ = on;
  change();
}

void Projector::setMask(std::vector<std::uint8_t> mask) {
  mask_ = std::move(mask);
  change();
}

void Projector::change() {
  light_.values.clear();
  ++version_;
}

const Light& Projector::light() {
  if (light_.values.empty()) computeLight();
  return light_;
}

void Projector::computeLight() {
  light_ = {size_, LightKind::columns, {}};
  light_.values.assign(asIndex(size_.width), on_ ? brightness_[fullLevel] : Brightness{0});
  if (!on_) return;
  if (shown_ != nullptr) showPattern();
  if (isMasked()) applyMask();
}

void Projector::convert(const Colour* from, std::size_t count, std::size_t step, Brightness* to) const {
  for (std::size_t i = 0; i < count; ++i) to[i] = brightness_[mean(from[i * step])];
}

void Projector::showPattern() {
  const std::size_t width = asIndex(size_.width);
  if (shown_->size == size_ && isOfColumns(*shown_)) return convert(shown_->row(0), width, 1, light_.values.data());
  const bool rows = shown_->size == size_ && isOfRows(*shown_);
  light_.kind = rows ? LightKind::rows : LightKind::image;
  light_.values.assign(asIndex(size_.height) * (rows ? 1 : width), brightness_[0]);
  if (rows) return convert(shown_->row(0), asIndex(size_.height), width, light_.values.data());
  const std::size_t shared = std::min(width, asIndex(shown_->size.width));
  for (std::int32_t y = 0; y < std::min(size_.height, shown_->size.height); ++y)
    convert(shown_->row(y), shared, 1, light_.values.data() + asIndex(y) * width);
}

// One value for each pixel, whatever the light was.
void Projector::spread() {
  const std::size_t width = asIndex(size_.width);
  std::vector<Brightness> image;
  for (std::size_t y = 0; y < asIndex(size_.height); ++y) {
    const auto row = light_.values.begin() + static_cast<std::ptrdiff_t>(light_.kind == LightKind::image ? y * width : 0);
    if (light_.kind == LightKind::rows)
      image.insert(image.end(), width, light_.values[y]);
    else
      image.insert(image.end(), row, row + size_.width);
  }
  light_ = {size_, LightKind::image, std::move(image)};
}

void Projector::applyMask() {
  spread();
  std::transform(mask_.begin(), mask_.end(), light_.values.begin(), light_.values.begin(), share);
}

}  // namespace fringix::head
