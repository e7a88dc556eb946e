// Light, camera and projector settings, and what a head tells of its state. Values have the head's units; nothing is converted but
// brightness levels, which count from 1 for the caller and from 0 on the wire.
#include <array>

#include "device/camera_device.h"

namespace fringix {

namespace {

constexpr FetchFailure ownCode = FetchFailure::ownCode;

// Levels wrap instead of overflowing: a head may state any number.
std::int32_t levelFromWire(std::int32_t value) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) + 1); }
std::int32_t levelToWire(std::int32_t level) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(level) - 1); }

void store(std::int32_t* out, std::int32_t value) {
  if (out != nullptr) *out = value;
}

}  // namespace

int CameraDevice::CheckSystem(std::int32_t* result) {
  return command("30MSG_SLCheckSystem").requireFirst(result != nullptr).receive(result).result();
}

int CameraDevice::GetTemperature(std::int32_t* temperature) {
  return command("47MSG_SLGetTemperature").requireFirst(temperature != nullptr).since(2400).receive(temperature).status();
}

int CameraDevice::GetLEDPowerMinMax(std::int32_t* min, std::int32_t* max) {
  std::array<unsigned char, 8> reply;
  const int result = command("46MSG_SLGetProjPowMinMax").receiveBytes(reply.data(), reply.size()).result();
  if (result != SLALL_OKAY) return result;
  store(min, readLittleEndian(reply.data()));
  store(max, readLittleEndian(reply.data() + 4));
  return SLALL_OKAY;
}

int CameraDevice::SetLEDPower(std::int32_t power) {
  auto exchange = command("51MSG_SLSetLEDPower");
  std::int32_t min = 0;
  std::int32_t max = 0;
  const int range = GetLEDPowerMinMax(&min, &max);
  return exchange.finishUnlessZero(range).require(min <= power && power <= max).send(power).status();
}

int CameraDevice::GetLEDPower(std::int32_t* power) {
  return command("50MSG_SLGetLEDPower").finishIf(power == nullptr).receive(power).result();
}

// The head tells the highest level first, on purpose.
int CameraDevice::GetBrightnessMinMax(std::int32_t* min, std::int32_t* max) {
  std::int32_t highest = 0;
  std::int32_t lowest = 0;
  const int result = command("54MSG_SLGetBrightnessMinMax").receive(&highest).receive(&lowest).result();
  if (result != SLALL_OKAY) return result;
  store(min, levelFromWire(lowest));
  store(max, levelFromWire(highest));
  return SLALL_OKAY;
}

// The head's answer is the result as it stands, whatever it is; on purpose.
int CameraDevice::SetBrightnessLevel(std::int32_t level) {
  std::int32_t answer = 0;
  return command("52MSG_SLSetBrightness").send(levelToWire(level)).receive(&answer).finishUnlessZero(answer).result();
}

int CameraDevice::GetBrightnessLevel(std::int32_t* level) {
  std::int32_t value = 0;
  const int result = command("53MSG_SLGetBrightness").receive(&value).result();
  if (result == SLALL_OKAY) store(level, levelFromWire(value));
  return result;
}

// A range that is known needs no head, not even a connection. The head tells the maximum first.
int CameraDevice::GetGainMinMax(std::int32_t* min, std::int32_t* max) {
  auto exchange = command("57MSG_SLGetGainMinMax");
  if (facts_.gainMinimum < 0 && facts_.gainMaximum < 0) {
    std::int32_t highest = 0;
    std::int32_t lowest = 0;
    if (exchange.receive(&highest).receive(&lowest).result() != SLALL_OKAY) return exchange.result();
    facts_.gainMaximum = highest;
    facts_.gainMinimum = lowest;
  }
  store(min, facts_.gainMinimum);
  store(max, facts_.gainMaximum);
  return SLALL_OKAY;
}

int CameraDevice::SetGain(std::int32_t gain) { return command("55MSG_SLSetGain").send(gain).status(); }

int CameraDevice::GetGain(std::int32_t* gain) { return command("56MSG_SLGetGain").receive(gain).result(); }

int CameraDevice::GetUptime(std::int32_t* uptime) {
  return command("240MSG_SLGETUPTIME").since(2800, ownCode).finishIf(uptime == nullptr).receive(uptime).result();
}

int CameraDevice::GetProjectorTemperature(std::int32_t* temperature) {
  return command("260MSG_SLGETPROJTEMP").since(3000, ownCode).finishIf(temperature == nullptr).receive(temperature).result();
}

// The same name as the temperature's but for its number, on purpose.
int CameraDevice::GetProjectorStatus(std::int32_t* status) {
  return command("270MSG_SLGETPROJTEMP").since(3000, ownCode).finishIf(status == nullptr).receive(status).result();
}

int CameraDevice::GetCurrentExposure(std::int32_t* exposure) {
  return command("280MSG_SLGETEXPOSURE").since(3100, ownCode).finishIf(exposure == nullptr).receive(exposure).result();
}

int CameraDevice::SetDMDState(std::int32_t state) { return command("250MSG_SLSETDMDSTATE").since(2900, ownCode).send(state).status(); }

int CameraDevice::SetMask(const std::uint8_t* mask, std::int32_t selector, std::int32_t width, std::int32_t height) {
  const std::uint32_t size = static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height);  // 32 bits, as on the wire
  return command("290MSG_SLSetMask").since(3200, ownCode).send(selector, width, height).bytes(mask, size).status();
}

int CameraDevice::ClearMask() { return command("300MSG_SLClearMask").since(3100, ownCode).result(); }

int CameraDevice::SetLedPowerValue(std::uint8_t value) {
  return command("320MSG_SET_DIRECT_LEDPOWER").since(3300, ownCode).send(value).status();
}

}  // namespace fringix
