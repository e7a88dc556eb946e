// Camera pictures: 1 byte per pixel, rows from top to bottom, no gaps. No status word follows them: the first two bytes tell whether
// there is a picture at all.
#include <algorithm>
#include <cstring>
#include <new>

#include "device/camera_device.h"

namespace fringix {

namespace {

constexpr std::int32_t firstWithChannels = 2600;  // protocol version

// The top left corner of `frame`, cropped to `width` x `height`; what the frame does not cover stays untouched.
void copyCorner(const std::uint8_t* frame, FrameSize size, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  const std::size_t rows = std::min<std::size_t>(height, size.height);
  const std::size_t columns = std::min<std::size_t>(width, size.width);
  for (std::size_t row = 0; row < rows && columns > 0; ++row) std::memcpy(buffer + row * width, frame + row * size.width, columns);
}

// Whether `factor` is 1 or more and divides the size; a factor of 0 divides nothing.
bool divides(std::int64_t factor, std::size_t width, std::size_t height) {
  const auto divisor = static_cast<std::size_t>(factor);
  return factor >= 1 && width % divisor == 0 && height % divisor == 0;
}

// One byte for each factor x factor cell.
std::size_t reduced(std::size_t width, std::size_t height, std::size_t factor) { return width / factor * height / factor; }

}  // namespace

int CameraDevice::GetNumberOfChannels(std::uint32_t* channelCount) {
  return command("224MSG_SLNumberOfChannels").since(firstWithChannels).receive(channelCount).status();
}

int CameraDevice::GetLiveImage(std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  auto exchange = command("41MSG_SLGetLiveImage");
  return receiveFrame(exchange.send(), buffer, width, height);
}

int CameraDevice::GetLiveImageEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t width, std::uint32_t height) {
  if (channel == 0) return GetLiveImage(buffer, width, height);
  auto exchange = command("220MSG_SLGetLiveImageEx");
  return receiveFrame(exchange.since(firstWithChannels).send(channel), buffer, width, height);
}

int CameraDevice::GetLiveImageROI(std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                                  std::uint32_t roiHeight) {
  const Region region{roiX, roiY, roiWidth, roiHeight};
  return command("42MSG_SLGetLiveImageROI")
      .require(isInsideFrame(region) && buffer != nullptr)
      .finishIf(region.pixels() == 0)
      .block(roiX, roiY, roiWidth, roiHeight)
      .picture(buffer, region.pixels());
}

int CameraDevice::GetLiveImageROIEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY,
                                    std::uint32_t roiWidth, std::uint32_t roiHeight) {
  if (channel == 0) return GetLiveImageROI(buffer, roiX, roiY, roiWidth, roiHeight);
  const Region region{roiX, roiY, roiWidth, roiHeight};
  return command("221MSG_SLGetLiveImageROIEx")
      .since(firstWithChannels)
      .require(isInsideFrame(region) && buffer != nullptr)
      .finishIf(region.pixels() == 0)
      .block(roiX, roiY, roiWidth, roiHeight, channel)
      .picture(buffer, region.pixels());
}

// Channel 0 goes to the head like any other here and in GetLiveImageLowRes; there is no counterpart without a channel.
int CameraDevice::GetLiveImageROILowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY,
                                        std::uint32_t roiWidth, std::uint32_t roiHeight, std::int32_t factor) {
  const Region region{roiX, roiY, roiWidth, roiHeight};
  auto exchange = command("226MSG_SLGetLiveImageROILowRes");
  exchange.since(firstWithChannels)
      .require(isInsideFrame(region) && divides(factor, roiWidth, roiHeight) && buffer != nullptr)
      .finishIf(region.pixels() == 0);
  if (!exchange.undecided()) return exchange.result();
  return exchange.block(roiX, roiY, roiWidth, roiHeight, channel, factor)
      .picture(buffer, reduced(roiWidth, roiHeight, static_cast<std::size_t>(factor)));
}

int CameraDevice::GetLiveImageLowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t factor) {
  const std::optional<FrameSize> frame = cameraFrame();
  auto exchange = command("225MSG_SLGetLiveImageLowRes");
  exchange.since(firstWithChannels).require(frame && divides(factor, frame->width, frame->height) && buffer != nullptr);
  if (!exchange.undecided()) return exchange.result();
  return exchange.block(factor, channel).picture(buffer, reduced(frame->width, frame->height, factor));  // the factor first, on purpose
}

int CameraDevice::GetImageIndex(std::uint32_t imageIndex, std::uint8_t* buffer) {
  auto exchange = command("43MSG_SLGetImageIndex");
  return receiveWhole(exchange.send(imageIndex), buffer, SLBAD_PARAMETER);  // no picture: -3 here and -4 elsewhere, on purpose
}

int CameraDevice::GetImageIndexEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer) {
  if (channel == 0) return GetImageIndex(imageIndex, buffer);
  auto exchange = command("222MSG_SLGetImageIndexEx");
  return receiveWhole(exchange.since(firstWithChannels).send(imageIndex, channel), buffer, SLSYSTEM_ERROR);
}

// Stored regions are asked for whatever their size; the reply to an empty one cannot be received, which breaks the session. On purpose.
int CameraDevice::GetImageIndexROI(std::uint32_t imageIndex, std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY,
                                   std::uint32_t roiWidth, std::uint32_t roiHeight) {
  const Region region{roiX, roiY, roiWidth, roiHeight};
  return command("44MSG_SLGetImageIndexROI")
      .require(isInsideFrame(region))
      .block(roiX, roiY, roiWidth, roiHeight, imageIndex)
      .picture(buffer, region.pixels());
}

int CameraDevice::GetImageIndexROIEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer, std::uint32_t roiX,
                                     std::uint32_t roiY, std::uint32_t roiWidth, std::uint32_t roiHeight) {
  if (channel == 0) return GetImageIndexROI(imageIndex, buffer, roiX, roiY, roiWidth, roiHeight);
  const Region region{roiX, roiY, roiWidth, roiHeight};
  return command("223MSG_SLGetImageIndexROIEx")
      .since(firstWithChannels)
      .require(isInsideFrame(region))
      .block(roiX, roiY, roiWidth, roiHeight, imageIndex, channel)
      .picture(buffer, region.pixels());
}

// Nothing where the head has stated a size that no frame can have.
std::optional<FrameSize> CameraDevice::cameraFrame() const {
  const std::int32_t width = facts_.cameraWidth;
  const std::int32_t height = facts_.cameraHeight;
  if (width < 0 || height < 0) return std::nullopt;
  return FrameSize{static_cast<std::size_t>(width), static_cast<std::size_t>(height)};
}

bool CameraDevice::isInsideFrame(const Region& region) const {
  const std::optional<FrameSize> frame = cameraFrame();
  return frame && std::size_t{region.x} + region.width <= frame->width && std::size_t{region.y} + region.height <= frame->height;
}

int CameraDevice::receiveWhole(Exchange& exchange, std::uint8_t* buffer, int noPicture) {
  const std::optional<FrameSize> frame = cameraFrame();
  return frame ? exchange.picture(buffer, frame->pixels(), noPicture) : exchange.abandon(SLSYSTEM_ERROR);
}

// Straight into the caller's buffer where it has the camera's size, through the scratch frame otherwise.
int CameraDevice::receiveFrame(Exchange& exchange, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) {
  const std::optional<FrameSize> frame = cameraFrame();
  if (!exchange.undecided()) return exchange.result();
  if (!frame || (width == frame->width && height == frame->height)) return receiveWhole(exchange, buffer, SLSYSTEM_ERROR);

  if (!scratchFrame_) scratchFrame_.reset(new (std::nothrow) std::uint8_t[frame->pixels()]);
  if (!scratchFrame_) return exchange.finish(SLSYSTEM_ERROR);  // the next call tries again
  const int result = exchange.picture(scratchFrame_.get(), frame->pixels());
  if (scratchFrame_) copyCorner(scratchFrame_.get(), *frame, buffer, width, height);  // gone with a broken connection
  return result;
}

}  // namespace fringix
