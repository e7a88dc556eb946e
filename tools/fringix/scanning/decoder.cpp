#include "scanning/decoder.h"

#include <utility>

namespace fringix::tool {

Decoder::Decoder(const SLScanPlan& plan, const SLScanCalibration& calibration, const SLScanSettings& settings, std::uint32_t camera)
    : camera_(static_cast<std::int32_t>(camera)), optics_(calibration.cameras[camera]) {
  SLScanCalibration needed = calibration;
  needed.cameraCount = camera_ + 1;  // a scanner has tables for each of them
  making_ = std::async(std::launch::async, [plan, needed, settings] { return scan::Scanner(plan, needed, settings); });
}

const scan::Scanner& Decoder::scanner() {
  if (!scanner_) scanner_.emplace(making_.get());
  return *scanner_;
}

void Decoder::take(Image picture) {
  if (adding_.valid()) adding_.get();
  adding_ = std::async(std::launch::async, [this, picture = std::move(picture)] {
    scanner().add(camera_, picture.pixels.data(), static_cast<std::int32_t>(picture.width), static_cast<std::int32_t>(picture.height));
  });
}

Decoded Decoder::finish() {
  if (adding_.valid()) adding_.get();
  const auto pixels = static_cast<std::size_t>(optics_.width) * static_cast<std::size_t>(optics_.height);
  Decoded decoded{scan::Cloud(pixels, true), std::vector<float>(pixels)};
  SLScanCloud buffers = decoded.cloud.buffers();
  buffers.modulation = decoded.modulation.data();
  scan::check(SLScanFinish(scanner().handle(), camera_, &buffers, &decoded.cloud.findings));
  return decoded;
}

}  // namespace fringix::tool
