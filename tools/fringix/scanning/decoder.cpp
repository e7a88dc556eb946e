#include "scanning/decoder.h"

#include <utility>

namespace fringix::tool {

void Decoder::take(Image picture) {
  if (adding_.valid()) adding_.get();
  adding_ = std::async(std::launch::async, [this, picture = std::move(picture)] {
    scanner_.add(camera_, picture.pixels.data(), static_cast<std::int32_t>(picture.width), static_cast<std::int32_t>(picture.height));
  });
}

Decoded Decoder::finish() {
  if (adding_.valid()) adding_.get();
  const auto pixels = static_cast<std::size_t>(optics_.width) * static_cast<std::size_t>(optics_.height);
  Decoded decoded{scan::Cloud(pixels, true), std::vector<float>(pixels)};
  SLScanCloud buffers = decoded.cloud.buffers();
  buffers.modulation = decoded.modulation.data();
  scan::check(SLScanFinish(scanner_.handle(), camera_, &buffers, &decoded.cloud.findings));
  return decoded;
}

}  // namespace fringix::tool
