// The session interface: every operation that a head offers, in the fixed order of its table. Results are status codes unless the
// comment says otherwise; pointers are borrowed for the call. What each exported operation does, with units, ranges and status codes,
// is told in fringix/fringix.h beside the function that bears its name with the prefix SL.
// Operations may be called from any thread; the session runs them one after the other.
#pragma once

#include <cstdint>

namespace fringix {

using TriggerCallback = void (*)(void* context);
using EventHandler = void (*)(std::int32_t event, void* context, std::int64_t parameter);
using WindowHandle = void*;

class ICameraDevice {
 public:
  virtual ~ICameraDevice() = default;

  virtual int Close() = 0;

  // Triggers and events.
  virtual void SetTriggerWindow(WindowHandle window, std::uint32_t message) = 0;
  virtual void SetGPIOCallback(TriggerCallback callback) = 0;
  virtual void SetContextCallback(TriggerCallback callback, void* context) = 0;
  virtual int AddEventWindow(WindowHandle window, std::uint32_t message) = 0;
  virtual int AddEventHandler(EventHandler handler, void* context) = 0;
  virtual int RemoveEventWindow(WindowHandle window, std::uint32_t message) = 0;
  virtual int RemoveEventHandler(EventHandler handler, void* context) = 0;

  virtual int EnableCamLogging() = 0;  // tells the head to log camera activity
  virtual int CheckSystem(std::int32_t* result) = 0;
  virtual int GetTemperature(std::int32_t* temperature) = 0;

  // Pattern sequences on the head.
  virtual int SeqAlloc(std::uint32_t imageCount, std::uint32_t* sequenceId) = 0;
  virtual int SeqFree(std::uint32_t sequenceId) = 0;
  virtual int SeqPut(std::uint32_t sequenceId, const std::uint8_t* data, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                     std::uint8_t imageIndex) = 0;
  virtual int SeqMakeGrayCode(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) = 0;
  virtual int SeqMakePhase(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) = 0;
  virtual int SeqMakeFromLine8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) = 0;
  virtual int SeqMakeFromCol8(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) = 0;
  virtual int SeqMakeFromLine24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) = 0;
  virtual int SeqMakeFromCol24(std::uint32_t sequenceId, std::uint8_t imageIndex, const std::uint8_t* data, std::uint32_t length) = 0;
  // Has the head compute its Gray-code result, 2 bytes per camera pixel; `pitch` is the byte length of one row of `result`.
  virtual int CalcGrayCode(std::uint8_t* result, std::int32_t pitch, std::uint32_t height, std::uint8_t g1, std::uint8_t g2,
                           std::uint8_t g3, std::uint8_t g4) = 0;
  virtual int SeqMakeImage(std::uint32_t sequenceId, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) = 0;

  // Display.
  virtual int ShowImage24(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) = 0;
  virtual int ShowImage8(const std::uint8_t* data, std::int32_t width, std::int32_t height, std::int32_t stride) = 0;
  virtual int ShowFromSeq(std::uint32_t sequenceId, std::uint32_t imageIndex) = 0;

  virtual int GetSerial(std::int32_t* serial) = 0;     // asked once per connection; null is skipped
  virtual int GetPixelDepth(std::int32_t* depth) = 0;  // bits per camera pixel, asked once per connection; null is skipped
  virtual int GetLEDPowerMinMax(std::int32_t* min, std::int32_t* max) = 0;
  virtual int StartMeasurement(std::uint32_t sequenceId) = 0;
  virtual int StartFromTo(std::uint32_t sequenceId, std::uint32_t fromIndex, std::uint32_t toIndex) = 0;

  // Pictures.
  virtual int GetNumberOfChannels(std::uint32_t* channelCount) = 0;
  virtual int GetLiveImage(std::uint8_t* buffer, std::uint32_t width, std::uint32_t height) = 0;
  virtual int GetLiveImageEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t width, std::uint32_t height) = 0;
  virtual int GetLiveImageROI(std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                              std::uint32_t roiHeight) = 0;
  virtual int GetLiveImageROIEx(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY, std::uint32_t roiWidth,
                                std::uint32_t roiHeight) = 0;
  virtual int GetLiveImageROILowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t roiX, std::uint32_t roiY,
                                    std::uint32_t roiWidth, std::uint32_t roiHeight, std::int32_t factor) = 0;
  virtual int GetLiveImageLowRes(std::uint8_t* buffer, std::uint32_t channel, std::uint32_t factor) = 0;
  virtual int GetImageIndex(std::uint32_t imageIndex, std::uint8_t* buffer) = 0;
  virtual int GetImageIndexEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer) = 0;
  virtual int GetImageIndexROI(std::uint32_t imageIndex, std::uint8_t* buffer, std::uint32_t roiX, std::uint32_t roiY,
                               std::uint32_t roiWidth, std::uint32_t roiHeight) = 0;
  virtual int GetImageIndexROIEx(std::uint32_t imageIndex, std::uint32_t channel, std::uint8_t* buffer, std::uint32_t roiX,
                                 std::uint32_t roiY, std::uint32_t roiWidth, std::uint32_t roiHeight) = 0;

  // Light and camera settings.
  virtual int SetLEDPower(std::int32_t power) = 0;
  virtual int GetLEDPower(std::int32_t* power) = 0;
  virtual int GetBrightnessMinMax(std::int32_t* min, std::int32_t* max) = 0;
  virtual int SetBrightnessLevel(std::int32_t level) = 0;
  virtual int GetBrightnessLevel(std::int32_t* level) = 0;
  virtual int GetGainMinMax(std::int32_t* min, std::int32_t* max) = 0;
  virtual int SetGain(std::int32_t gain) = 0;
  virtual int GetGain(std::int32_t* gain) = 0;

  virtual int SaveData(const std::uint8_t* data, std::int32_t size, const char* fileName) = 0;
  virtual int LoadData(std::uint8_t** data, std::int32_t* size, const char* fileName) = 0;

  // Cached sizes in pixels; the result is the value itself, -1 when unknown. No traffic.
  virtual std::int32_t GetCameraWidth() = 0;
  virtual std::int32_t GetCameraHeight() = 0;
  virtual std::int32_t GetProjectorWidth() = 0;
  virtual std::int32_t GetProjectorHeight() = 0;
  virtual std::int32_t GetCameraPixelCount();

  virtual int Noop() = 0;                               // keeps the connection from going idle; no reply
  virtual int GetLastSendTime(std::int64_t* time) = 0;  // seconds since 1970 of the last command sent; null is skipped

  virtual int ReadIniInt(std::int32_t* value, const char* section, const char* key) = 0;
  virtual int WriteIniInt(std::int32_t value, const char* section, const char* key) = 0;
  virtual int SetOutputSettings(std::int32_t output, std::int32_t setting) = 0;
  virtual int ExecOutput(std::int32_t output) = 0;
  virtual int GetGPIOStatus(std::int32_t line, std::int32_t* state) = 0;
  virtual int SetGPIOValue(std::int32_t line, std::int32_t value) = 0;
  virtual int ExecRS232(const char* request, char* reply, std::int32_t replySize) = 0;
  virtual int GetUptime(std::int32_t* uptime) = 0;
  virtual int GetProjectorTemperature(std::int32_t* temperature) = 0;
  virtual int GetProjectorStatus(std::int32_t* status) = 0;
  virtual int SetDMDState(std::int32_t state) = 0;
  virtual int GetCurrentExposure(std::int32_t* exposure) = 0;
  virtual int SetMask(const std::uint8_t* mask, std::int32_t selector, std::int32_t width, std::int32_t height) = 0;
  virtual int ClearMask() = 0;
  virtual int ExecProjCmd(std::uint8_t request, std::uint8_t argument, std::uint8_t* result1, std::uint8_t* result2,
                          std::uint8_t* result3) = 0;
  virtual int SetLedPowerValue(std::uint8_t value) = 0;
  // Any output may be null; `address` receives a text that stays valid while the session is connected.
  virtual int GetDevKey(const char** address, std::int32_t* serial, std::int32_t* version) = 0;
};

}  // namespace fringix
