#include "head/head_model.h"

#include <algorithm>
#include <string>
#include <utility>

#include "head/chart.h"
#include "head/digits.h"

namespace fringix::head {

namespace {

constexpr std::uint8_t labelShade = 255;

void drawLabel(Picture& picture, const std::string& text, std::int32_t line) {
  const std::int32_t scale = std::max(1, picture.size.height / 100);
  drawDigits(picture, 3 * scale, (3 + line * (digitHeight + 3)) * scale, scale, text, labelShade);
}

}  // namespace

HeadModel::HeadModel(HeadSettings settings) : settings_(std::move(settings)) {}

void HeadModel::takeLivePicture(Picture& picture) {
  const std::lock_guard lock(mutex_);
  if (chart_.pixels.empty()) chart_ = makeChart(settings_.camera);
  picture = chart_;
  drawLabel(picture, std::to_string(settings_.serial), 0);
  drawLabel(picture, std::to_string(++picturesTaken_), 1);
}

}  // namespace fringix::head
