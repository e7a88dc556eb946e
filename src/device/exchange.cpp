#include "device/exchange.h"

#include "device/camera_device.h"
#include "platform/worker.h"

namespace fringix {

Exchange::Exchange(CameraDevice& session, const char* name) : session_(session), lock_(session.lock_), name_(name) {
  if (platform::thisWorkerIsAbandoned()) result_ = SLSYSTEM_ERROR;  // the session has gone on without the thread that waited here
}

CommandChannel& Exchange::channel() { return *session_.channel_; }

bool Exchange::undecided() {
  if (!result_ && !session_.channel_) result_ = SLSYSTEM_ERROR;
  return !result_;
}

bool Exchange::requested() {
  if (!undecided()) return false;
  if (nameSent_) return true;
  nameSent_ = true;
  if (channel().SendString(name_) == 0) return true;
  fail();
  return false;
}

void Exchange::fail() {
  session_.HandleChannelFailure();
  result_ = SLCONNECTION_ERROR;
}

Exchange& Exchange::requireFirst(bool condition) {
  if (!result_ && !condition) result_ = SLBAD_PARAMETER;
  return *this;
}

Exchange& Exchange::connectedOr(int result) {
  if (!result_ && !session_.channel_) result_ = result;
  return *this;
}

Exchange& Exchange::require(bool condition) {
  if (undecided() && !condition) result_ = SLBAD_PARAMETER;
  return *this;
}

Exchange& Exchange::since(std::int32_t minimumVersion, FetchFailure onFetchFailure) {
  if (!undecided()) return *this;
  std::int32_t version = 0;
  const int fetched = session_.GetProtocolVersion(&version);
  if (fetched != SLALL_OKAY) {
    result_ = onFetchFailure == FetchFailure::ownCode ? fetched : SLVERSION_TOO_OLD;
  } else if (version < minimumVersion) {
    result_ = SLVERSION_TOO_OLD;
  }
  return *this;
}

Exchange& Exchange::finishIf(bool condition) {
  if (!result_ && condition) result_ = SLALL_OKAY;
  return *this;
}

Exchange& Exchange::finishUnlessZero(int result) {
  if (!result_ && result != 0) result_ = result;
  return *this;
}

Exchange& Exchange::text(const char* text) {
  return transfer([&](CommandChannel& channel) { return channel.SendString(text); });
}

Exchange& Exchange::bytes(const void* data, std::size_t size) {
  return transfer([&](CommandChannel& channel) { return channel.SendBytes(data, size); });
}

Exchange& Exchange::receive(std::int32_t* out) {
  return transfer([&](CommandChannel& channel) {
    std::int32_t dropped = 0;
    return channel.ReceiveInt(out != nullptr ? out : &dropped);
  });
}

Exchange& Exchange::receive(std::uint32_t* out) {
  std::int32_t value = 0;
  return transfer([&](CommandChannel& channel) {
    const int result = channel.ReceiveInt(&value);
    if (result == 0 && out != nullptr) *out = static_cast<std::uint32_t>(value);
    return result;
  });
}

Exchange& Exchange::receiveText(std::string* out) {
  return transfer([&](CommandChannel& channel) { return channel.ReceiveString(out); });
}

Exchange& Exchange::receiveBytes(void* buffer, std::size_t size) {
  return transfer([&](CommandChannel& channel) { return channel.ReceiveBytes(buffer, size); });
}

int Exchange::status() {
  if (requested()) result_ = session_.ReadStatus();
  return *result_;
}

int Exchange::result() { return requested() ? SLALL_OKAY : *result_; }

int Exchange::picture(std::uint8_t* pixels, std::size_t size, int noPicture) {
  const int received = receiveBytes(pixels, size).result();
  if (received != SLALL_OKAY) return received;
  const bool marked = size >= 2 && pixels[0] == 0x00 && pixels[1] == 0xFF;
  return marked ? noPicture : SLALL_OKAY;
}

int Exchange::finish(int result) {
  if (requested()) result_ = result;
  return *result_;
}

int Exchange::abandon(int result) {
  if (requested()) {
    session_.HandleChannelFailure();
    result_ = result;
  }
  return *result_;
}

}  // namespace fringix
