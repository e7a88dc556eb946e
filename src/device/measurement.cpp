// Measurements: the head projects a sequence while its camera grabs, and answers when it has finished.
#include "device/camera_device.h"

namespace fringix {

namespace {

constexpr std::int32_t failedMeasurement = -2;  // as the head says it

int measurementResult(std::int32_t reply) {
  if (reply == failedMeasurement) return SLMEASUREMENT_FAILED;
  return reply == 0 ? SLALL_OKAY : SLSYSTEM_ERROR;
}

}  // namespace

// The event is fired for every reply, good or bad, and while the session lock is held.
int CameraDevice::StartMeasurement(std::uint32_t sequenceId) {
  auto exchange = command("60MSG_SLStartMeasurement");
  std::int32_t reply = 0;
  if (const int result = exchange.send(sequenceId).receive(&reply).result(); result != SLALL_OKAY) return result;
  std::int32_t serial = 0;
  if (const int result = GetSerial(&serial); result != SLALL_OKAY) return result;
  events_.FireEvent(measurementFinished, serial);
  return measurementResult(reply);
}

// No event after a partial run; kept on purpose.
int CameraDevice::StartFromTo(std::uint32_t sequenceId, std::uint32_t fromIndex, std::uint32_t toIndex) {
  std::int32_t reply = 0;
  const int result = command("61MSG_SLStartFromTo").send(sequenceId, fromIndex, toIndex).receive(&reply).result();
  return result != SLALL_OKAY ? result : measurementResult(reply);
}

}  // namespace fringix
