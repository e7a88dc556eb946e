// One open connection to one head. The session lock serializes commands; a failed transfer drops the connection for good, after which
// every command gives SLSYSTEM_ERROR and only the destructor is left. Nothing reconnects.
//
// Two threads of its own work for an open session: the heartbeat and the trigger listener. They are stopped while the session lock is
// held, and without asking which thread it is that stops them; both are kept on purpose. So a thread that is just then waiting for the
// lock cannot end in time, and a thread whose own command breaks the connection waits for itself.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "device/ICameraDevice.h"
#include "device/exchange.h"
#include "device/frame.h"
#include "device/head_facts.h"
#include "net/command_channel.h"
#include "platform/reentrant_lock.h"
#include "threads/event_registry.h"
#include "threads/gpio_thread.h"
#include "threads/heartbeat_thread.h"
#include "threads/trigger_callback_class.h"

namespace fringix {

class CameraDevice : public TriggerCallbackClass, public ICameraDevice, public std::enable_shared_from_this<CameraDevice> {
 public:
  explicit CameraDevice(HeartbeatClock& clock = HeartbeatClock::ofTheSystem()) : heartbeat_(clock) {}
  ~CameraDevice() override;

  // A session that closes when its owner lets go of it. Its memory stays until the last abandoned worker has ended.
  static std::shared_ptr<CameraDevice> create(HeartbeatClock& clock = HeartbeatClock::ofTheSystem());

  CameraDevice(const CameraDevice&) = delete;
  CameraDevice& operator=(const CameraDevice&) = delete;

  // Takes the connected channel and shakes hands with the head: greeting, our protocol version, camera and projector size.
  // SLHANDSHAKE_TIMEOUT when the head does not greet within 2 seconds. On a failure the session is closed.
  int Init(std::unique_ptr<CommandChannel> channel) override;
  int Close() override;

  void OnTrigger() override;
  void SetTriggerWindow(WindowHandle window, std::uint32_t message) override;
  void SetGPIOCallback(TriggerCallback callback) override;
  void SetContextCallback(TriggerCallback callback, void* context) override;
  int AddEventWindow(WindowHandle window, std::uint32_t message) override;
  int AddEventHandler(EventHandler handler, void* context) override;
  int RemoveEventWindow(WindowHandle window, std::uint32_t message) override;
  int RemoveEventHandler(EventHandler handler, void* context) override;

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

  int SeqAlloc(std::uint32_t imageCount, std::uint32_t* sequenceId) override;
  int SeqFree(std::uint32_t sequenceId) override;
  int SeqPut(std::uint32_t sequenceId, const std::uint8_t* data, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
             std::uint8_t imageIndex) override;
  int SeqMakeGrayCode(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) override;
  int SeqMakePhase(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) override;
  int SeqMakeFromLine8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) override;
  int SeqMakeFromCol8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) override;
  int SeqMakeFromLine24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) override;
  int SeqMakeFromCol24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) override;
  int CalcGrayCode(std::uint8_t* result, std::int32_t pitch, std::uint32_t height, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3,
                   std::uint8_t g4) override;
  int SeqMakeImage(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) override;

  int ShowImage24(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) override;
  int ShowImage8(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) override;
  int ShowFromSeq(std::uint32_t sequenceId, std::uint32_t imageIndex) override;
  int StartMeasurement(std::uint32_t sequenceId) override;
  int StartFromTo(std::uint32_t sequenceId, std::uint32_t fromIndex, std::uint32_t toIndex) override;

  int GetNumberOfChannels(std::uint32_t* channelCount) override;
  int GetLiveImage(std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) override;
  int GetLiveImageEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t width, std::uint32_t height) override;
  int GetLiveImageROI(std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                      std::uint32_t roiHeight) override;
  int GetLiveImageROIEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                        std::uint32_t roiHeight) override;
  int GetLiveImageROILowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                            std::uint32_t roiHeight, std::int32_t factor) override;
  int GetLiveImageLowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t factor) override;
  int GetImageIndex(std::uint32_t imageIndex, std::uint8_t* buffer) override;
  int GetImageIndexEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer) override;
  int GetImageIndexROI(std::uint32_t imageIndex, std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                       std::uint32_t roiHeight) override;
  int GetImageIndexROIEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY,
                         std::uint32_t roiWidth, std::uint32_t roiHeight) override;

  int CheckSystem(std::int32_t* result) override;
  int GetTemperature(std::int32_t* temperature) override;
  int GetLEDPowerMinMax(std::int32_t* min, std::int32_t* max) override;
  int SetLEDPower(std::int32_t power) override;
  int GetLEDPower(std::int32_t* power) override;
  int GetBrightnessMinMax(std::int32_t* min, std::int32_t* max) override;
  int SetBrightnessLevel(std::int32_t level) override;
  int GetBrightnessLevel(std::int32_t* level) override;
  int GetGainMinMax(std::int32_t* min, std::int32_t* max) override;
  int SetGain(std::int32_t gain) override;
  int GetGain(std::int32_t* gain) override;
  int GetUptime(std::int32_t* uptime) override;
  int GetProjectorTemperature(std::int32_t* temperature) override;
  int GetProjectorStatus(std::int32_t* status) override;
  int GetCurrentExposure(std::int32_t* exposure) override;
  int SetDMDState(std::int32_t state) override;
  int SetMask(const std::uint8_t* mask, std::int32_t selector, std::int32_t width, std::int32_t height) override;
  int ClearMask() override;
  int SetLedPowerValue(std::uint8_t value) override;

  int SaveData(const std::uint8_t* data, std::int32_t size, const char* fileName) override;
  int LoadData(std::uint8_t** data, std::int32_t* size, const char* fileName) override;
  int ReadIniInt(std::int32_t* value, const char* section, const char* key) override;
  int WriteIniInt(std::int32_t value, const char* section, const char* key) override;
  int SetOutputSettings(std::int32_t output, std::int32_t setting) override;
  int ExecOutput(std::int32_t output) override;
  int GetGPIOStatus(std::int32_t line, std::int32_t* state) override;
  int SetGPIOValue(std::int32_t line, std::int32_t value) override;
  int ExecRS232(const char* request, char* reply, std::int32_t replySize) override;
  int ExecProjCmd(std::uint8_t request, std::uint8_t argument, std::uint8_t* result1, std::uint8_t* result2,
                  std::uint8_t* result3) override;

 private:
  friend class Exchange;

  enum class StatusWord { none, follows };

  Exchange command(const char* name) { return {*this, name}; }
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
  void startThreads();
  int stopThreads();

  bool fitsProjector(std::int32_t width, std::int32_t height, std::int32_t stride);
  int showImage(Exchange exchange, const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride);

  int makeFromPixels(const char* name, std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length);

  std::optional<FrameSize> cameraFrame() const;
  bool isInsideFrame(const Region& region) const;
  int receiveWhole(Exchange& exchange, std::uint8_t* buffer, int noPicture);
  int receiveFrame(Exchange& exchange, std::uint8_t* buffer, std::uint32_t width, std::uint32_t height);

  platform::ReentrantLock lock_;
  std::unique_ptr<CommandChannel> channel_;  // null: not connected
  std::atomic<bool> connected_{false};       // whether there is a channel, for those who look without the lock
  std::shared_ptr<const std::atomic<std::int64_t>> lastSendTime_;
  std::string address_;  // outlives the channel, because GetDevKey hands out its text
  HeadFacts facts_;
  std::unique_ptr<std::uint8_t[]> scratchFrame_;  // one camera frame, made when first needed
  EventRegistry events_;
  HeartbeatThread heartbeat_;
  GPIOThread listener_;
};

}  // namespace fringix
