// Images on the projector, and measurements.
#include "api/export_call.h"

using namespace fringix;

// Always as a 24-bit image.
int32_t SLShowImage(int32_t handle, const uint8_t* data, int32_t width, int32_t height, int32_t stride) {
  return ExportCall("SLShowImage", "%s, Parameter: %i, %p, %i, %i, %i", handle, data, width, height, stride)
      .device(handle, &ICameraDevice::ShowImage24, data, width, height, stride);
}

int32_t SLShowImageFromSeq(int32_t handle, uint32_t sequenceId, uint32_t imageIndex) {
  return ExportCall("SLShowImageFromSeq", "%s, Parameter: %i, %i, %i", handle, sequenceId, imageIndex)
      .device(handle, &ICameraDevice::ShowFromSeq, sequenceId, imageIndex);
}

int32_t SLStartMeasurement(int32_t handle, uint32_t sequenceId) {
  return ExportCall("SLStartMeasurement", "%s, Parameter: %i, %i", handle, sequenceId)
      .device(handle, &ICameraDevice::StartMeasurement, sequenceId);
}

// The trace leaves the sequence id out, on purpose.
int32_t SLStartFromTo(int32_t handle, uint32_t sequenceId, uint32_t fromIndex, uint32_t toIndex) {
  return ExportCall("SLStartFromTo", "%s, Parameter: %i, %i, %i", handle, fromIndex, toIndex)
      .device(handle, &ICameraDevice::StartFromTo, sequenceId, fromIndex, toIndex);
}
