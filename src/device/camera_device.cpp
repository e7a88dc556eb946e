#include "device/camera_device.h"

#include <array>
#include <mutex>
#include <utility>

#include "diagnosis/trace.h"
#include "platform/clock.h"

namespace fringix {

namespace {

constexpr std::int32_t protocolVersion = 3300;
constexpr std::uint32_t greetingLimit = 2;  // seconds
constexpr std::chrono::milliseconds farewellPause{100};

}  // namespace

CameraDevice::~CameraDevice() { CameraDevice::Close(); }

std::shared_ptr<CameraDevice> CameraDevice::create(HeartbeatClock& clock) {
  auto session = std::make_shared<CameraDevice>(clock);
  CameraDevice* const open = session.get();
  return {open, [session = std::move(session)](CameraDevice* closing) { closing->Close(); }};
}

int CameraDevice::Init(std::unique_ptr<CommandChannel> channel) {
  trace("Cameradevice: Init");
  if (!channel) {
    trace("Cameradevice: Cannot init, no device given");
    return SLSYSTEM_ERROR;
  }
  const std::lock_guard guard(lock_);
  adoptChannel(std::move(channel));
  int result = greet();
  if (result == SLALL_OKAY) {
    startThreads();
    result = queryCameraSize();
  }
  if (result == SLALL_OKAY) result = queryProjectorSize();
  if (result != SLALL_OKAY) Close();
  return result;
}

int CameraDevice::greet() {
  myTcpSocket* socket = channel_->socket();
  if (socket != nullptr && socket->WaitReadable(greetingLimit) == 0) return SLHANDSHAKE_TIMEOUT;
  std::int32_t greeting = 0;  // any value will do
  if (channel_->ReceiveInt(&greeting) != 0) return SLCONNECTION_ERROR;
  return channel_->SendInt(protocolVersion) == 0 ? SLALL_OKAY : SLCONNECTION_ERROR;
}

int CameraDevice::queryCameraSize() {
  std::int32_t width = HeadFacts::unknown;
  std::int32_t height = HeadFacts::unknown;
  const int result = command("40MSG_SLGetMaxImageSize").receive(&width).receive(&height).status();
  if (result != SLALL_OKAY) return result;
  facts_.cameraWidth = width;
  facts_.cameraHeight = height;
  return SLALL_OKAY;
}

int CameraDevice::queryProjectorSize() {
  std::array<unsigned char, 12> reply;  // width, height and one integer of no interest
  const int result = command("45MSG_SLGetProjDimension").receiveBytes(reply.data(), reply.size()).result();
  if (result != SLALL_OKAY) return result;
  facts_.projectorWidth = readLittleEndian(reply.data());
  facts_.projectorHeight = readLittleEndian(reply.data() + 4);
  return SLALL_OKAY;
}

int CameraDevice::Close() {
  const std::lock_guard guard(lock_);
  if (!channel_) return SLALL_OKAY;
  trace("Cameradevice: Closing");
  const int result = stopThreads();
  const bool farewell = channel_->SendString("ByeBye=") == 0;
  platform::sleepFor(farewellPause);  // lets the head read the farewell before the connection goes
  dropChannel();
  trace("Cameradevice: closed");
  return farewell ? result : SLCONNECTION_ERROR;
}

void CameraDevice::HandleChannelFailure() {
  const std::lock_guard guard(lock_);
  trace("Cameradevice: Closing");
  stopThreads();
  dropChannel();
  trace("Cameradevice: closed on error");
}

void CameraDevice::adoptChannel(std::unique_ptr<CommandChannel> channel) {
  address_ = channel->peerAddress();
  lastSendTime_ = channel->sharedLastSendTime();
  channel_ = std::move(channel);
  connected_ = true;
}

void CameraDevice::dropChannel() noexcept {
  connected_ = false;
  channel_.reset();
  facts_.forget();
  scratchFrame_.reset();
}

// A thread that cannot be had is missed by nobody: the session goes on without.
void CameraDevice::startThreads() {
  const std::shared_ptr<void> share = weak_from_this().lock();
  trace("Cameradevice: Start Heartbeatthread");
  heartbeat_.setDevice(this);
  heartbeat_.Start(share);
  trace("Cameradevice: Start GPIOthread");
  listener_.Start(address_, share);
  listener_.setOwner(this);
}

int CameraDevice::stopThreads() {
  listener_.setOwner(nullptr);
  int result = SLALL_OKAY;
  if (heartbeat_.Stop() != 0) {
    trace("Cameradevice: Error while closing, cannot stop HeartbeatThread");
    result = SLSYSTEM_ERROR;
  }
  if (listener_.Stop() != 0) {
    trace("Cameradevice: Error while closing, cannot stop GPIOThread");
    result = SLSYSTEM_ERROR;
  }
  return result;
}

int CameraDevice::ReadStatus() {
  std::int32_t status = 0;
  if (!channel_ || channel_->ReceiveInt(&status) != 0) {
    HandleChannelFailure();
    return SLCONNECTION_ERROR;
  }
  return status == 0 ? SLALL_OKAY : SLSYSTEM_ERROR;  // the head's own value goes no further
}

}  // namespace fringix
