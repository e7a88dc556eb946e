#include "head/optics/projector.h"

#include <algorithm>
#include <utility>

namespace fringix::head {

namespace {

std::uint8_t mean(const Colour& colour) { return static_cast<std::uint8_t>((colour.red + colour.green + colour.blue + 1) / 3); }

std::uint8_t share(std::uint8_t part, std::uint8_t light) { return static_cast<std::uint8_t>((part * light + 127) / 255); }

}  // namespace

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
  light_.clear();
  ++version_;
}

const std::vector<std::uint8_t>& Projector::light() {
  if (light_.empty()) computeLight();
  return light_;
}

void Projector::computeLight() {
  const auto pixels = static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height);
  light_.assign(pixels + 1, on_ && shown_ == nullptr ? 255 : 0);
  light_.back() = 0;
  if (on_ && shown_ != nullptr) showPattern();
  if (on_ && isMasked()) applyMask();
}

void Projector::showPattern() {
  const std::int32_t width = std::min(size_.width, shown_->size.width);
  for (std::int32_t y = 0; y < std::min(size_.height, shown_->size.height); ++y) {
    const Colour* row = shown_->row(y);
    std::transform(row, row + width, light_.begin() + std::ptrdiff_t{y} * size_.width, mean);
  }
}

void Projector::applyMask() { std::transform(mask_.begin(), mask_.end(), light_.begin(), light_.begin(), share); }

}  // namespace fringix::head
