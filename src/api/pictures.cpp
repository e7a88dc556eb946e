// Camera pictures and the sizes of camera and projector.
#include "api/export_call.h"

using namespace fringix;

namespace {

int tellSize(int32_t width, int32_t height, uint32_t* widthOut, uint32_t* heightOut) {
  if (widthOut != nullptr) *widthOut = static_cast<uint32_t>(width);
  if (heightOut != nullptr) *heightOut = static_cast<uint32_t>(height);
  return SLALL_OKAY;
}

}  // namespace

int32_t SLGetCameraSize(int32_t handle, uint32_t* width, uint32_t* height) {
  return ExportCall("SLGetCameraSize", "%s, Parameter: %i, %p, %p", handle, width, height).device(handle, [&](ICameraDevice& device) {
    return tellSize(device.GetCameraWidth(), device.GetCameraHeight(), width, height);
  });
}

int32_t SLGetProjectorSize(int32_t handle, uint32_t* width, uint32_t* height) {
  return ExportCall("SLGetProjectorSize", "%s, Parameter: %i, %p, %p", handle, width, height).device(handle, [&](ICameraDevice& device) {
    return tellSize(device.GetProjectorWidth(), device.GetProjectorHeight(), width, height);
  });
}

int32_t SLGetNumberOfChannels(int32_t handle, uint32_t* channelCount) {
  return ExportCall("SLGetNumberOfChannels", "%s, Parameter: %i, %p", handle, channelCount)
      .device(handle, &ICameraDevice::GetNumberOfChannels, channelCount);
}

// The two whole-picture functions print their buffer as an integer, on purpose.
int32_t SLGetLiveImage(int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height) {
  return ExportCall("SLGetLiveImage", "%s, Parameter: %i, %i, %i, %i", handle, printedAsInteger(buffer), width, height)
      .device(handle, &ICameraDevice::GetLiveImage, buffer, width, height);
}

int32_t SLGetLiveImageEx(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t width, uint32_t height) {
  return ExportCall("SLGetLiveImageEx", "%s, Parameter: %i, %i, %i, %i, %i", handle, channel, printedAsInteger(buffer), width, height)
      .device(handle, &ICameraDevice::GetLiveImageEx, buffer, channel, width, height);
}

int32_t SLGetLiveImageROI(int32_t handle, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth, uint32_t roiHeight) {
  return ExportCall("SLGetLiveImageROI", "%s, Parameter: %i, %p, %i, %i, %i, %i", handle, buffer, roiX, roiY, roiWidth, roiHeight)
      .device(handle, &ICameraDevice::GetLiveImageROI, buffer, roiX, roiY, roiWidth, roiHeight);
}

int32_t SLGetLiveImageROIEx(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth,
                            uint32_t roiHeight) {
  return ExportCall("SLGetLiveImageROIEx", "%s, Parameter: %i, %i, %p, %i, %i, %i, %i", handle, channel, buffer, roiX, roiY, roiWidth,
                    roiHeight)
      .device(handle, &ICameraDevice::GetLiveImageROIEx, buffer, channel, roiX, roiY, roiWidth, roiHeight);
}

// The trace leaves the factor out, on purpose.
int32_t SLGetLiveImageROILowRes(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth,
                                uint32_t roiHeight, int32_t factor) {
  return ExportCall("SLGetLiveImageROILowRes", "%s, Parameter: %i, %i, %p, %i, %i, %i, %i", handle, channel, buffer, roiX, roiY, roiWidth,
                    roiHeight)
      .device(handle, &ICameraDevice::GetLiveImageROILowRes, buffer, channel, roiX, roiY, roiWidth, roiHeight, factor);
}

int32_t SLGetLiveImageLowRes(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t factor) {
  return ExportCall("SLGetLiveImageLowRes", "%s, Parameter: %i, %i, %p, %i", handle, channel, buffer, factor)
      .device(handle, &ICameraDevice::GetLiveImageLowRes, buffer, channel, factor);
}

int32_t SLGetImageIndex(int32_t handle, uint8_t imageIndex, uint8_t* buffer) {
  return ExportCall("SLGetImageIndex", "%s, Parameter: %i, %i, %p", handle, imageIndex, buffer)
      .device(handle, &ICameraDevice::GetImageIndex, imageIndex, buffer);
}

int32_t SLGetImageIndexEx(int32_t handle, uint32_t channel, uint8_t imageIndex, uint8_t* buffer) {
  return ExportCall("SLGetImageIndexEx", "%s, Parameter: %i, %i, %i, %p", handle, channel, imageIndex, buffer)
      .device(handle, &ICameraDevice::GetImageIndexEx, imageIndex, channel, buffer);
}

// The traces of the two stored regions leave the image index out, on purpose.
int32_t SLGetImageIndexROI(int32_t handle, uint8_t imageIndex, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth,
                           uint32_t roiHeight) {
  return ExportCall("SLGetImageIndexROI", "%s, Parameter: %i, %p, %i, %i, %i, %i", handle, buffer, roiX, roiY, roiWidth, roiHeight)
      .device(handle, &ICameraDevice::GetImageIndexROI, imageIndex, buffer, roiX, roiY, roiWidth, roiHeight);
}

int32_t SLGetImageIndexROIEx(int32_t handle, uint32_t channel, uint8_t imageIndex, uint8_t* buffer, uint32_t roiX, uint32_t roiY,
                             uint32_t roiWidth, uint32_t roiHeight) {
  return ExportCall("SLGetImageIndexROIEx", "%s, Parameter: %i, %i, %p, %i, %i, %i, %i", handle, channel, buffer, roiX, roiY, roiWidth,
                    roiHeight)
      .device(handle, &ICameraDevice::GetImageIndexROIEx, imageIndex, channel, buffer, roiX, roiY, roiWidth, roiHeight);
}
