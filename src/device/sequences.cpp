// Pattern sequences in the head's memory, and the Gray-code result that the head computes. Pixels are the caller's: nothing is
// converted or packed anew. Which sequence ids are valid, and what the generation parameters mean, is the head's business.
#include "device/camera_device.h"

namespace fringix {

int CameraDevice::SeqAlloc(std::uint32_t imageCount, std::uint32_t* sequenceId) {
  auto exchange = command("11MSG_SLSeqAlloc");
  exchange.require(sequenceId != nullptr);
  if (sequenceId != nullptr && exchange.undecided()) *sequenceId = 0;
  return exchange.send(imageCount).receive(sequenceId).status();  // the id stays written when the status is bad
}

int CameraDevice::SeqFree(std::uint32_t sequenceId) { return command("10MSG_SLSeqFree").send(sequenceId).status(); }

// Only exact full-frame 24-bit patterns: padded rows are refused on purpose, although a head could take them.
int CameraDevice::SeqPut(std::uint32_t sequenceId, const std::uint8_t* data, std::uint32_t width, std::uint32_t height,
                         std::uint32_t stride, std::uint8_t imageIndex) {
  const std::int64_t projectorWidth = GetProjectorWidth();
  return command("12MSG_SLSeqPut")
      .require(width == projectorWidth && height == std::int64_t{GetProjectorHeight()} && stride == projectorWidth * 3)
      .block(sequenceId, imageIndex, width, height, stride)
      .bytes(data, std::size_t{height} * stride)
      .status();
}

int CameraDevice::SeqMakeGrayCode(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) {
  return command("14MSG_SLSeqMakeGraycode").require(g2 <= 23).block(sequenceId, g1, g2, g3, g4).status();
}

int CameraDevice::SeqMakePhase(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) {
  return command("13MSG_SLSeqMakePhase").block(sequenceId, g1, g2, g3, g4).status();
}

int CameraDevice::SeqMakeImage(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) {
  return command("15MSG_SLSeqMakeImage").block(sequenceId, g1, g2, g3, g4).status();
}

int CameraDevice::SeqMakeFromLine8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) {
  return makeFromPixels("16MSG_SLSeqMakeFromLine8", sequenceId, imageIndex, data, length);
}

int CameraDevice::SeqMakeFromCol8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) {
  return makeFromPixels("17MSG_SLSeqMakeFromCol8", sequenceId, imageIndex, data, length);
}

int CameraDevice::SeqMakeFromLine24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) {
  return makeFromPixels("18MSG_SLSeqMakeFromLine24", sequenceId, imageIndex, data, length);
}

int CameraDevice::SeqMakeFromCol24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) {
  return makeFromPixels("19MSG_SLSeqMakeFromCol24", sequenceId, imageIndex, data, length);
}

int CameraDevice::makeFromPixels(const char* name, std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data,
                                 std::uint32_t length) {
  return command(name).block(sequenceId, imageIndex, length).bytes(data, length).status();
}

int CameraDevice::CalcGrayCode(std::uint8_t* result, std::int32_t pitch, std::uint32_t height, std::uint8_t g1, std::uint8_t g2,
                               std::uint8_t g3, std::uint8_t g4) {
  return command("90MSG_SLCalcGrayCode")
      .require(pitch >= 0 && pitch == std::int64_t{GetCameraWidth()} * 2 && height == std::int64_t{GetCameraHeight()})
      .block(g1, g2, g3, g4)
      .receiveBytes(result, std::size_t{height} * static_cast<std::size_t>(pitch))
      .status();
}

}  // namespace fringix
