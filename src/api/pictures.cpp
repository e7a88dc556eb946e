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

int32_t SLGetLiveImage(int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height) {
  return ExportCall("SLGetLiveImage", "%s, Parameter: %i, %i, %i, %i", handle, printedAsInteger(buffer), width, height)
      .device(handle, &ICameraDevice::GetLiveImage, buffer, width, height);
}
