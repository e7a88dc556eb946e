// What a head says of itself, and the two commands without a reply.
#include "device/camera_device.h"

namespace fringix {

int CameraDevice::EnableCamLogging() { return command("70MSG_SLEnableCamLogging").result(); }

int CameraDevice::Noop() { return command("100MSG_SLNOOP").result(); }

int CameraDevice::GetProtocolVersion(std::int32_t* version) {
  return fetchOnce(facts_.protocolVersion, "20MSG_SLGetProtocolVersion", StatusWord::none, version);
}

int CameraDevice::GetSerial(std::int32_t* serial) {
  if (!connected()) return SLSYSTEM_ERROR;
  return fetchOnce(facts_.serial, "21MSG_SLGetSerial", StatusWord::none, serial);
}

int CameraDevice::GetPixelDepth(std::int32_t* depth) {
  if (!connected()) return SLSYSTEM_ERROR;
  return fetchOnce(facts_.pixelDepth, "22MSG_SLGetPixelDepth", StatusWord::follows, depth);
}

// A known value costs neither traffic nor the lock, so it is there even while a long command runs.
int CameraDevice::fetchOnce(std::atomic<std::int32_t>& cache, const char* name, StatusWord statusWord, std::int32_t* out) {
  std::int32_t value = cache;
  int result = SLALL_OKAY;
  if (value < 0) {
    auto exchange = command(name);
    if (exchange.receive(&value).result() != SLALL_OKAY) return exchange.result();
    cache = value;
    if (statusWord == StatusWord::follows) result = exchange.status();
    if (result == SLCONNECTION_ERROR) return result;
  }
  if (out != nullptr) *out = value;  // also when the status is bad
  return result;
}

// Takes no lock, so the channel may go meanwhile; its send time outlives it.
int CameraDevice::GetLastSendTime(std::int64_t* time) {
  if (!connected()) return SLSYSTEM_ERROR;
  if (time != nullptr) *time = *lastSendTime_;
  return SLALL_OKAY;
}

int CameraDevice::GetDevKey(const char** address, std::int32_t* serial, std::int32_t* version) {
  if (const int result = GetSerial(serial); result != SLALL_OKAY) return result;
  if (!connected()) return SLSYSTEM_ERROR;
  if (const int result = GetProtocolVersion(version); result != SLALL_OKAY) return result;
  if (address != nullptr) *address = address_.c_str();
  return SLALL_OKAY;
}

}  // namespace fringix
