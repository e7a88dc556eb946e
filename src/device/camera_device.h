// One open connection to one head. The session lock serializes commands; a failed transfer drops the connection for good, after which
// every command gives SLSYSTEM_ERROR and only the destructor is left. Nothing reconnects.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "device/absent_operations.h"
#include "device/exchange.h"
#include "device/head_facts.h"
#include "net/command_channel.h"
#include "platform/reentrant_lock.h"

namespace fringix {

class CameraDevice : public AbsentOperations {
 public:
  CameraDevice() = default;
  ~CameraDevice() override;
  CameraDevice(const CameraDevice&) = delete;
  CameraDevice& operator=(const CameraDevice&) = delete;

  // Takes the connected channel and shakes hands with the head: greeting, our protocol version, camera and projector size.
  // SLHANDSHAKE_TIMEOUT when the head does not greet within 2 seconds. On a failure the session is closed.
  int Init(std::unique_ptr<CommandChannel> channel);
  int Close() override;

  int EnableCamLogging() override;
  int GetSerial(std::int32_t* serial) override;
  int GetPixelDepth(std::int32_t* depth) override;
  int Noop() override;
  int GetLastSendTime(std::int64_t* time) override;
  int GetDevKey(const char** address, std::int32_t* serial, std::int32_t* version) override;

  std::int32_t GetCameraWidth() override { return facts_.cameraWidth; }
  std::int32_t GetCameraHeight() override { return facts_.cameraHeight; }
  std::int32_t GetProjectorWidth() override { return facts_.projectorWidth; }
  std::int32_t GetProjectorHeight() override { return facts_.projectorHeight; }

  int GetLiveImage(std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) override;

 private:
  friend class Exchange;

  enum class StatusWord { none, follows };

  Exchange command(const char* name) { return Exchange(*this, name); }
  bool connected() const noexcept { return connected_; }

  int greet();
  int queryCameraSize();
  int queryProjectorSize();
  int fetchOnce(std::atomic<std::int32_t>& cache, const char* name, StatusWord statusWord, std::int32_t* out);
  int GetProtocolVersion(std::int32_t* version);
  int ReadStatus();
  void HandleChannelFailure();
  void adoptChannel(std::unique_ptr<CommandChannel> channel);
  void dropChannel() noexcept;
  int receiveFrame(Exchange& exchange, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height);

  platform::ReentrantLock lock_;
  std::unique_ptr<CommandChannel> channel_;  // null: not connected
  std::atomic<bool> connected_{false};       // whether there is a channel, for those who look without the lock
  std::string address_;                      // outlives the channel, because GetDevKey hands out its text
  HeadFacts facts_;
  std::unique_ptr<std::uint8_t[]> scratchFrame_;  // one camera frame, made when first needed
};

}  // namespace fringix
