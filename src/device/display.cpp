// Images on the projector. Pixels are the caller's and leave as they are.
#include "device/camera_device.h"

namespace fringix {

// Sizes are compared as signed numbers; a row may have up to 3 bytes per projector pixel.
bool CameraDevice::fitsProjector(std::int32_t width, std::int32_t height, std::int32_t stride) {
  const std::int64_t projectorWidth = GetProjectorWidth();
  return width <= projectorWidth && height <= GetProjectorHeight() && stride <= projectorWidth * 3;
}

int CameraDevice::ShowImage24(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) {
  auto exchange = command("00MSG_SLShowImage24");
  exchange.require(data != nullptr && width != 0 && height != 0 && stride != 0 && std::int64_t{width} * 3 <= stride);
  return showImage(std::move(exchange), data, width, height, stride);
}

// No test for null, zero or short rows, and rows as long as those of 24-bit images: both kept on purpose.
int CameraDevice::ShowImage8(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) {
  return showImage(command("01MSG_SLShowImage8"), data, width, height, stride);
}

// A negative height or stride passes the comparison; there is nothing that could be sent for one.
int CameraDevice::showImage(Exchange exchange, const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) {
  const std::int64_t size = std::int64_t{height} * stride;
  return exchange.require(fitsProjector(width, height, stride))
      .require(height >= 0 && stride >= 0)
      .block(width, height, stride)
      .bytes(data, static_cast<std::size_t>(size))
      .status();
}

int CameraDevice::ShowFromSeq(std::uint32_t sequenceId, std::uint32_t imageIndex) {
  return command("02MSG_SLShowFromSeq").send(sequenceId, imageIndex).status();
}

}  // namespace fringix
