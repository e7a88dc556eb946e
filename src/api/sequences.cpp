// Pattern sequences on the head.
#include "api/export_call.h"

using namespace fringix;

int32_t SLSeqAlloc(int32_t handle, uint32_t imageCount, uint32_t* sequenceId) {
  return ExportCall("SLSeqAlloc", "%s, Parameter: %i, %i, %p", handle, imageCount, sequenceId)
      .device(handle, &ICameraDevice::SeqAlloc, imageCount, sequenceId);
}

int32_t SLSeqFree(int32_t handle, uint32_t sequenceId) {
  return ExportCall("SLSeqFree", "%s, Parameter: %i, %i", handle, sequenceId).device(handle, &ICameraDevice::SeqFree, sequenceId);
}

// The trace leaves the sequence id out, on purpose.
int32_t SLSeqPut(int32_t handle, uint32_t sequenceId, const uint8_t* data, uint32_t width, uint32_t height, uint32_t stride,
                 uint8_t imageIndex) {
  return ExportCall("SLSeqPut", "%s, Parameter: %i, %p, %i, %i, %i, %i", handle, data, width, height, stride, imageIndex)
      .device(handle, &ICameraDevice::SeqPut, sequenceId, data, width, height, stride, imageIndex);
}

// The missing comma is part of the trace line.
int32_t SLSeqMakeGrayCode(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4) {
  return ExportCall("SLSeqMakeGrayCode", "%s, Parameter: %i, %i, %i, %i %i, %i", handle, sequenceId, g1, g2, g3, g4)
      .device(handle, &ICameraDevice::SeqMakeGrayCode, sequenceId, g1, g2, g3, g4);
}

int32_t SLSeqMakePhase(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4) {
  return ExportCall("SLSeqMakePhase", "%s, Parameter: %i, %i, %i, %i, %i, %i", handle, sequenceId, g1, g2, g3, g4)
      .device(handle, &ICameraDevice::SeqMakePhase, sequenceId, g1, g2, g3, g4);
}

int32_t SLSeqMakeFromLine8(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length) {
  return ExportCall("SLSeqMakeFromLine8", "%s, Parameter: %i, %i, %i, %p, %i", handle, sequenceId, imageIndex, data, length)
      .device(handle, &ICameraDevice::SeqMakeFromLine8, sequenceId, imageIndex, data, length);
}

int32_t SLSeqMakeFromCol8(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length) {
  return ExportCall("SLSeqMakeFromCol8", "%s, Parameter: %i, %i, %i, %p, %i", handle, sequenceId, imageIndex, data, length)
      .device(handle, &ICameraDevice::SeqMakeFromCol8, sequenceId, imageIndex, data, length);
}

int32_t SLSeqMakeFromLine24(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length) {
  return ExportCall("SLSeqMakeFromLine24", "%s, Parameter: %i, %i, %i, %p, %i", handle, sequenceId, imageIndex, data, length)
      .device(handle, &ICameraDevice::SeqMakeFromLine24, sequenceId, imageIndex, data, length);
}

int32_t SLSeqMakeFromCol24(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length) {
  return ExportCall("SLSeqMakeFromCol24", "%s, Parameter: %i, %i, %i, %p, %i", handle, sequenceId, imageIndex, data, length)
      .device(handle, &ICameraDevice::SeqMakeFromCol24, sequenceId, imageIndex, data, length);
}

// The trace has no place for g4, on purpose.
int32_t SLSeqMakeImage(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4) {
  return ExportCall("SLSeqMakeImage", "%s, Parameter: %i, %i, %i, %i, %i", handle, sequenceId, g1, g2, g3, g4)
      .device(handle, &ICameraDevice::SeqMakeImage, sequenceId, g1, g2, g3, g4);
}
