// Camera pictures: 1 byte per pixel, rows from top to bottom, no gaps.
#include <algorithm>
#include <cstring>
#include <new>

#include "device/camera_device.h"

namespace fringix {

namespace {

struct FrameSize {
  std::size_t width;
  std::size_t height;
  std::size_t pixels() const noexcept { return width * height; }  // two 31-bit numbers: no overflow in 64 bits
};

// The top left corner of `frame`, cropped to `width` x `height`; what the frame does not cover stays untouched.
void copyCorner(const std::uint8_t* frame, FrameSize size, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  const std::size_t rows = std::min<std::size_t>(height, size.height);
  const std::size_t columns = std::min<std::size_t>(width, size.width);
  for (std::size_t row = 0; row < rows && columns > 0; ++row) std::memcpy(buffer + row * width, frame + row * size.width, columns);
}

}  // namespace

int CameraDevice::GetLiveImage(std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  auto exchange = command("41MSG_SLGetLiveImage");
  return receiveFrame(exchange.send(), buffer, width, height);
}

// Straight into the caller's buffer where it has the camera's size, through the scratch frame otherwise.
int CameraDevice::receiveFrame(Exchange& exchange, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  if (exchange.result() != SLALL_OKAY) return exchange.result();
  const std::int32_t cameraWidth = facts_.cameraWidth;
  const std::int32_t cameraHeight = facts_.cameraHeight;
  if (cameraWidth < 0 || cameraHeight < 0) return exchange.abandon(SLSYSTEM_ERROR);

  const FrameSize frame{static_cast<std::size_t>(cameraWidth), static_cast<std::size_t>(cameraHeight)};
  if (width == frame.width && height == frame.height) {
    return exchange.receiveBytes(buffer, frame.pixels()).picture(buffer, frame.pixels());
  }
  if (!scratchFrame_) scratchFrame_.reset(new (std::nothrow) std::uint8_t[frame.pixels()]);
  if (!scratchFrame_) return exchange.abandon(SLSYSTEM_ERROR);
  if (exchange.receiveBytes(scratchFrame_.get(), frame.pixels()).result() != SLALL_OKAY) return exchange.result();
  copyCorner(scratchFrame_.get(), frame, buffer, width, height);
  return exchange.picture(scratchFrame_.get(), frame.pixels());
}

}  // namespace fringix
