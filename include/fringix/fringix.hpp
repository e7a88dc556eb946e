// fringix.hpp - a thin C++ face of the C interface in fringix.h (C++17 or later, header only).
//
//   fringix::Device head("192.168.0.10");
//   fringix::Image picture = head.liveImage();
//
// What holds for the C interface holds here; fringix.h tells it per function. What is different:
//
// - A failure is an exception of type fringix::Error instead of a status code.
// - A session ends with its Device, which must outlast the calls to it.
// - Member functions are const where they leave the Device as it is, whatever they do to the head. Like the commands behind them
//   they may be called from any number of threads.
#ifndef FRINGIX_FRINGIX_HPP
#define FRINGIX_FRINGIX_HPP

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fringix.h"

namespace fringix {

// The name of a status code as fringix.h spells it, also of the two codes that SLErrorcodeToChar has no name for.
inline const char* statusName(std::int32_t code) {
  switch (code) {
    case SLHANDSHAKE_TIMEOUT:
      return "SLHANDSHAKE_TIMEOUT";
    case SLVERSION_TOO_OLD:
      return "SLVERSION_TOO_OLD";
    default:
      return SLErrorcodeToChar(code);
  }
}

// A call that gave a status other than SLALL_OKAY. what() reads "SLGetLiveImage: SLCONNECTION_ERROR (-10)".
class Error : public std::runtime_error {
 public:
  Error(const char* operation, std::int32_t code)
      : std::runtime_error(std::string(operation) + ": " + statusName(code) + " (" + std::to_string(code) + ")"),
        operation_(operation),
        code_(code) {}

  const char* operation() const noexcept { return operation_; }  // the C function that failed; a constant text
  std::int32_t code() const noexcept { return code_; }
  const char* name() const { return statusName(code_); }

 private:
  const char* operation_;
  std::int32_t code_;
};

inline void check(const char* operation, std::int32_t status) {
  if (status != SLALL_OKAY) throw Error(operation, status);
}

// Is told of every call that the wrapper makes of a C function with a status, on the thread that makes it and from several threads at
// once. Throws nothing.
class CallObserver {
 public:
  virtual void begins(const char* operation) noexcept = 0;
  virtual void ends(const char* operation, std::int32_t status) noexcept = 0;

 protected:
  ~CallObserver() = default;
};

namespace detail {

inline std::atomic<CallObserver*> callObserver{nullptr};

template <class Function, class... Arguments>
std::int32_t observed(const char* operation, Function function, Arguments... arguments) {
  CallObserver* const observer = callObserver.load();
  if (observer != nullptr) observer->begins(operation);
  const std::int32_t status = function(arguments...);
  if (observer != nullptr) observer->ends(operation, status);
  return status;
}

}  // namespace detail

// One observer for the process, in place of the one before; it has to stay until no call is under way any more. Null for none.
inline void observeCalls(CallObserver* observer) { detail::callObserver = observer; }

struct Size {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

// A part of a picture, in pixels from its top left corner.
struct Region {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

// A gray picture: 1 byte per pixel, rows from top to bottom without gaps.
struct Image {
  // What resize() gives at most: a size comes from the head, and a broken one may state anything.
  static constexpr std::uint64_t maximumPixels = std::uint64_t{1} << 30;

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;

  Image() = default;
  explicit Image(Size size) { resize(size); }

  // Takes on a size and keeps the memory that it already has; throws std::length_error above maximumPixels.
  void resize(Size size) {
    const std::uint64_t count = std::uint64_t{size.width} * size.height;
    if (count > maximumPixels)
      throw std::length_error("a picture of " + std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels is too large");
    pixels.resize(static_cast<std::size_t>(count));
    width = size.width;
    height = size.height;
  }
};

// A projector image: 3 bytes per pixel, rows from top to bottom without gaps.
struct RgbImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;
};

// The values that a setting takes, both ends included.
struct Range {
  std::int32_t min = 0;
  std::int32_t max = 0;
};

struct Key {
  std::int32_t serial = 0;
  std::int32_t protocolVersion = 0;
  std::string address;
};

// A head that answered a search. Numbers that it did not tell are -1.
struct FoundDevice {
  std::int32_t serial = -1;
  std::string model;    // "UNKNOWN_DEVICE" for a model that the library does not know
  std::string address;  // of the answer's sender
  std::array<std::int32_t, 7> info{};
};

// Searches all IPv4 networks of this machine, each for at least 300 ms, and gives the heads that answer, sorted by serial number: at
// most 256, as many as the library hands out. Not beside another search, whose list it would read.
inline std::vector<FoundDevice> findDevices() {
  constexpr std::int32_t mostGiven = 256;
  std::int32_t count = 0;
  check("SLGetDeviceKeyListSize", detail::observed("SLGetDeviceKeyListSize", SLGetDeviceKeyListSize, &count));
  std::vector<FoundDevice> found;
  for (std::int32_t index = 0; index < count && index < mostGiven; ++index) {
    DeviceKeyEntryEx entry{};
    check("SLGetDeviceKeyListEntryEx", detail::observed("SLGetDeviceKeyListEntryEx", SLGetDeviceKeyListEntryEx, index, &entry));
    found.push_back({entry.serial,
                     entry.modelName,
                     entry.ipAddress,
                     {entry.info1, entry.info2, entry.info3, entry.info4, entry.info5, entry.info6, entry.info7}});
  }
  return found;
}

// A head that a user picked.
struct SelectedHead {
  std::int32_t serial = 0;
  std::int32_t info1 = 0;
  std::string address;
};

// Shows the device selector before a window (see SLShowDeviceDialog) and blocks until it is closed. Nothing when the user cancelled it,
// or where it cannot be shown. Throws SLCONNECTION_ERROR when the head that was picked does not answer any more.
inline std::optional<SelectedHead> selectHead(void* parent = nullptr) {
  DeviceKeyEntry entry = {0, 0, nullptr};
  check("SLShowDeviceDialog", detail::observed("SLShowDeviceDialog", SLShowDeviceDialog, parent, &entry));
  if (entry.ipAddress != nullptr) return SelectedHead{entry.serial, entry.info1, entry.ipAddress};
  if (entry.serial == -1) throw Error("SLShowDeviceDialog", SLCONNECTION_ERROR);
  return std::nullopt;
}

// A session with one head. Moving from a Device leaves it closed; every command to a closed Device throws SLUNKNOWN_DEVICE_ID.
class Device {
 public:
  // Blocks while connecting: up to minutes where nothing answers.
  explicit Device(const std::string& address) {
    check("SLDevAlloc", detail::observed("SLDevAlloc", SLDevAlloc, address.c_str(), &handle_));
  }
  static Device open(const std::string& address) { return Device(address); }

  // Searches for the head as findDevices() does; throws SLCONNECTION_ERROR when none with this serial number answers.
  static Device openBySerial(std::int32_t serial) {
    Device device;
    check("SLDevAllocBySerial", detail::observed("SLDevAllocBySerial", SLDevAllocBySerial, serial, &device.handle_));
    return device;
  }

  ~Device() {
    if (isOpen()) detail::observed("SLDevFree", SLDevFree, handle_);
  }
  Device(Device&& other) noexcept : handle_(std::exchange(other.handle_, closedHandle)) {}
  Device& operator=(Device&& other) noexcept {
    Device(std::move(other)).swap(*this);
    return *this;
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  void swap(Device& other) noexcept { std::swap(handle_, other.handle_); }
  bool isOpen() const noexcept { return handle_ != closedHandle; }
  std::int32_t handle() const noexcept { return handle_; }  // for the C functions; -1 when closed

  // Ends the session now and tells how that went, which the destructor cannot. Closed in any case; closing twice is harmless.
  void close() {
    if (isOpen()) check("SLDevFree", detail::observed("SLDevFree", SLDevFree, std::exchange(handle_, closedHandle)));
  }

  Key key() const {
    const auto entry = get<DeviceKeyEntry>("SLGetDevKey", SLGetDevKey);
    return {entry.serial, entry.info1, entry.ipAddress};
  }

  // Throw SLSYSTEM_ERROR once the connection is lost: the sizes are unknown then.
  Size cameraSize() const { return size("SLGetCameraSize", SLGetCameraSize); }
  Size projectorSize() const { return size("SLGetProjectorSize", SLGetProjectorSize); }

  // The projector. An image that is smaller than the projector is put where the head puts it.
  void show(const RgbImage& image) const {
    requireWhole("SLShowImage", image);
    call("SLShowImage", SLShowImage, image.pixels.data(), static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height),
         static_cast<std::int32_t>(image.width * 3));
  }
  void showFromSequence(std::uint32_t id, std::uint32_t index) const { call("SLShowImageFromSeq", SLShowImageFromSeq, id, index); }

  // Measurements of a whole sequence, or of a range of its images. Block until the head has finished, 30 seconds at most.
  void measure(std::uint32_t id) const { call("SLStartMeasurement", SLStartMeasurement, id); }
  void measure(std::uint32_t id, std::uint32_t from, std::uint32_t to) const { call("SLStartFromTo", SLStartFromTo, id, from, to); }

  // A plain function called on each trigger, in place of the one before; null for none. A Subscription hears more.
  void setTriggerCallback(SLGPIOCallback callback) const { call("SLRegisterGPIOCallback", SLRegisterGPIOCallback, callback); }

  // Camera pictures, live and stored on the head. Channel 0 is the default camera; others need a head of protocol version 2600.
  std::uint32_t channelCount() const { return get<std::uint32_t>("SLGetNumberOfChannels", SLGetNumberOfChannels); }

  Image liveImage(std::uint32_t channel = 0) const {
    Image image;
    liveImage(image, channel);
    return image;
  }
  void liveImage(Image& image, std::uint32_t channel = 0) const {  // reuses the memory of `image`
    image.resize(cameraSize());
    call("SLGetLiveImageEx", SLGetLiveImageEx, channel, image.pixels.data(), image.width, image.height);
  }
  Image liveRegion(Region part, std::uint32_t channel = 0) const {
    Image image(Size{part.width, part.height});
    call("SLGetLiveImageROIEx", SLGetLiveImageROIEx, channel, image.pixels.data(), part.x, part.y, part.width, part.height);
    return image;
  }

  // In reduced resolution: one pixel for each cell of `factor` x `factor`; `factor` divides width and height. Needs 2600.
  Image liveLowRes(std::uint32_t factor, std::uint32_t channel = 0) const {
    Image image(reduced(cameraSize(), factor));
    call("SLGetLiveImageLowRes", SLGetLiveImageLowRes, channel, image.pixels.data(), factor);
    return image;
  }
  Image liveRegionLowRes(Region part, std::int32_t factor, std::uint32_t channel = 0) const {
    Image image(reduced({part.width, part.height}, static_cast<std::uint32_t>(factor)));
    call("SLGetLiveImageROILowRes", SLGetLiveImageROILowRes, channel, image.pixels.data(), part.x, part.y, part.width, part.height, factor);
    return image;
  }

  Image storedImage(std::uint8_t index, std::uint32_t channel = 0) const {
    Image image(cameraSize());
    call("SLGetImageIndexEx", SLGetImageIndexEx, channel, index, image.pixels.data());
    return image;
  }
  Image storedRegion(std::uint8_t index, Region part, std::uint32_t channel = 0) const {
    Image image(Size{part.width, part.height});
    call("SLGetImageIndexROIEx", SLGetImageIndexROIEx, channel, index, image.pixels.data(), part.x, part.y, part.width, part.height);
    return image;
  }

  // Settings and state, in the head's units.
  std::int32_t checkSystem() const { return get<std::int32_t>("SLCheckSystem", SLCheckSystem); }
  std::int32_t temperature() const { return get<std::int32_t>("SLGetTemperature", SLGetTemperature); }
  std::int32_t uptime() const { return get<std::int32_t>("SLGetUptime", SLGetUptime); }
  std::int32_t projectorTemperature() const { return get<std::int32_t>("SLGetProjectorTemperature", SLGetProjectorTemperature); }
  std::int32_t projectorStatus() const { return get<std::int32_t>("SLGetProjectorStatus", SLGetProjectorStatus); }
  std::int32_t exposure() const { return get<std::int32_t>("SLGetCurrentExposure", SLGetCurrentExposure); }
  std::int32_t ledPower() const { return get<std::int32_t>("SLGetLEDPower", SLGetLEDPower); }
  Range ledPowerRange() const { return range("SLGetLEDPowerMinMax", SLGetLEDPowerMinMax); }
  void setLedPower(std::int32_t power) const { call("SLSetLEDPower", SLSetLEDPower, power); }
  void setDirectLedPower(std::uint8_t value) const { call("SLSetLedPowerValue", SLSetLedPowerValue, value); }
  std::int32_t brightness() const { return get<std::int32_t>("SLGetBrightnessLevel", SLGetBrightnessLevel); }
  Range brightnessRange() const { return range("SLGetBrightnessMinMax", SLGetBrightnessMinMax); }
  void setBrightness(std::int32_t level) const { call("SLSetBrightnessLevel", SLSetBrightnessLevel, level); }
  std::int32_t gain() const { return get<std::int32_t>("SLGetGain", SLGetGain); }
  Range gainRange() const { return range("SLGetGainMinMax", SLGetGainMinMax); }
  void setGain(std::int32_t gain) const { call("SLSetGain", SLSetGain, gain); }
  void setDmdState(std::int32_t state) const { call("SLSetDMDState", SLSetDMDState, state); }
  void setMask(const Image& mask, std::int32_t selector = 0) const {
    constexpr std::uint32_t largestSide = (std::numeric_limits<std::int32_t>::max)();
    const bool whole = mask.pixels.size() == std::uint64_t{mask.width} * mask.height;
    if (!whole || mask.width > largestSide || mask.height > largestSide) throw Error("SLSetMask", SLBAD_PARAMETER);
    call("SLSetMask", SLSetMask, mask.pixels.data(), selector, static_cast<std::int32_t>(mask.width),
         static_cast<std::int32_t>(mask.height));
  }
  void clearMask() const { call("SLClearMask", SLClearMask); }

  // Blocks of bytes in files on the head. A file that is empty gives an empty block.
  void saveData(const std::string& fileName, const std::vector<std::uint8_t>& bytes) const {
    if (bytes.size() > (std::numeric_limits<std::int32_t>::max)()) throw Error("SLSaveData", SLBAD_PARAMETER);
    call("SLSaveData", SLSaveData, bytes.data(), static_cast<std::int32_t>(bytes.size()), fileName.c_str());
  }
  std::vector<std::uint8_t> loadData(const std::string& fileName) const {
    std::uint8_t* block = nullptr;
    std::int32_t size = 0;
    const std::int32_t status = detail::observed("SLLoadData", SLLoadData, handle_, &block, &size, fileName.c_str());
    const std::unique_ptr<std::uint8_t, std::int32_t (*)(std::uint8_t*)> freedAtTheEnd(block, SLFreeData);
    check("SLLoadData", status);
    return {block, block + size};
  }

  // Integers of the head's configuration.
  std::int32_t readIni(const std::string& section, const std::string& key) const {
    std::int32_t value = 0;
    call("SLReadIniInt", SLReadIniInt, &value, section.c_str(), key.c_str());
    return value;
  }
  void writeIni(const std::string& section, const std::string& key, std::int32_t value) const {
    call("SLWriteIniInt", SLWriteIniInt, value, section.c_str(), key.c_str());
  }

  // Lines of the head, and commands to what hangs on it.
  std::int32_t gpio(std::int32_t line) const { return get<std::int32_t>("SLGetGPIOStatus", SLGetGPIOStatus, line); }
  void setGpio(std::int32_t line, std::int32_t value) const { call("SLSetGPIOValue", SLSetGPIOValue, line, value); }
  std::string serial(const std::string& command) const {
    std::vector<char> reply(longestText + 1);
    call("SLExecRS232", SLExecRS232, command.c_str(), reply.data(), static_cast<std::int32_t>(reply.size()));
    return reply.data();
  }
  std::array<std::uint8_t, 3> projector(std::uint8_t command, std::uint8_t argument) const {
    std::array<std::uint8_t, 3> results{};
    call("SLExecProjCmd", SLExecProjCmd, command, argument, &results[0], &results[1], &results[2]);
    return results;
  }

  // Pattern sequences. The head gives the number of a sequence and decides what g1 to g4 mean.
  std::uint32_t allocateSequence(std::uint32_t imageCount) const { return get<std::uint32_t>("SLSeqAlloc", SLSeqAlloc, imageCount); }
  void freeSequence(std::uint32_t id) const { call("SLSeqFree", SLSeqFree, id); }
  void putImage(std::uint32_t id, std::uint8_t index, const RgbImage& image) const {
    requireWhole("SLSeqPut", image);
    call("SLSeqPut", SLSeqPut, id, image.pixels.data(), image.width, image.height, image.width * 3, index);
  }
  void makeGrayCode(std::uint32_t id, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) const {
    call("SLSeqMakeGrayCode", SLSeqMakeGrayCode, id, g1, g2, g3, g4);
  }
  void makePhase(std::uint32_t id, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) const {
    call("SLSeqMakePhase", SLSeqMakePhase, id, g1, g2, g3, g4);
  }
  void makeImage(std::uint32_t id, std::uint8_t g1, std::uint8_t g2, std::uint8_t g3, std::uint8_t g4) const {
    call("SLSeqMakeImage", SLSeqMakeImage, id, g1, g2, g3, g4);
  }

  // Patterns made from one line or one column of 8-bit pixels or of 24-bit pixels (3 bytes each).
  void makeFromLine8(std::uint32_t id, std::uint8_t index, const std::vector<std::uint8_t>& bytes) const {
    send("SLSeqMakeFromLine8", SLSeqMakeFromLine8, id, index, bytes);
  }
  void makeFromColumn8(std::uint32_t id, std::uint8_t index, const std::vector<std::uint8_t>& bytes) const {
    send("SLSeqMakeFromCol8", SLSeqMakeFromCol8, id, index, bytes);
  }
  void makeFromLine24(std::uint32_t id, std::uint8_t index, const std::vector<std::uint8_t>& bytes) const {
    send("SLSeqMakeFromLine24", SLSeqMakeFromLine24, id, index, bytes);
  }
  void makeFromColumn24(std::uint32_t id, std::uint8_t index, const std::vector<std::uint8_t>& bytes) const {
    send("SLSeqMakeFromCol24", SLSeqMakeFromCol24, id, index, bytes);
  }

 private:
  Device() = default;

  static constexpr std::int32_t closedHandle = -1;
  static constexpr std::uint32_t unknownSize = 0xFFFFFFFF;
  static constexpr std::size_t longestText = 999999;  // that a head can send

  // Its rows, 3 bytes a pixel, are to fit into the integers of the C functions.
  static void requireWhole(const char* operation, const RgbImage& image) {
    constexpr std::uint32_t largestSide = (std::numeric_limits<std::int32_t>::max)() / 3;
    const bool fits = image.width <= largestSide && image.height <= largestSide;
    if (!fits || image.pixels.size() != std::uint64_t{image.width} * image.height * 3) throw Error(operation, SLBAD_PARAMETER);
  }

  // One command: the C function with this session's handle before its other arguments.
  template <class Function, class... Arguments>
  void call(const char* operation, Function function, Arguments... arguments) const {
    check(operation, detail::observed(operation, function, handle_, arguments...));
  }

  // One command whose last parameter is a pointer to its result.
  template <class Value, class Function, class... Arguments>
  Value get(const char* operation, Function function, Arguments... arguments) const {
    Value value{};
    call(operation, function, arguments..., &value);
    return value;
  }

  // One command whose last parameters are bytes and their number.
  template <class Function>
  void send(const char* operation, Function function, std::uint32_t id, std::uint8_t index, const std::vector<std::uint8_t>& bytes) const {
    call(operation, function, id, index, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  }

  template <class Function>
  Size size(const char* operation, Function function) const {
    Size size;
    call(operation, function, &size.width, &size.height);
    if (size.width == unknownSize || size.height == unknownSize) throw Error(operation, SLSYSTEM_ERROR);
    return size;
  }

  template <class Function>
  Range range(const char* operation, Function function) const {
    Range range;
    call(operation, function, &range.min, &range.max);
    return range;
  }

  static Size reduced(Size size, std::uint32_t factor) { return factor == 0 ? Size{} : Size{size.width / factor, size.height / factor}; }

  std::int32_t handle_ = closedHandle;
};

// Hears the events of a Device, from its construction until it is destroyed, or reset(); it has to end before its Device does.
//
//   fringix::Subscription triggers(head, [&](std::int32_t event, std::int64_t serial) { ... });
//
// The function runs on a thread of the session, or on the one that measures, one call at a time for a Device; fringix.h tells what it
// may do. It may end its own Subscription. Ending one on another thread waits for a call that is under way; none follows. An exception
// that leaves the function is lost. Moving hands the Subscription on while calls may come.
class Subscription {
 public:
  using Function = std::function<void(std::int32_t event, std::int64_t serial)>;

  Subscription() = default;  // of nothing
  Subscription(const Device& device, Function function) : device_(device.handle()), handler_(std::make_shared<Handler>()) {
    handler_->function = std::move(function);
    check("SLRegisterEventhandler", detail::observed("SLRegisterEventhandler", SLRegisterEventhandler, device_, &Subscription::call,
                                                     static_cast<void*>(handler_.get())));
  }
  ~Subscription() { reset(); }
  Subscription(Subscription&& other) noexcept : device_(other.device_), handler_(std::move(other.handler_)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    Subscription(std::move(other)).swap(*this);
    return *this;
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

  void swap(Subscription& other) noexcept {
    std::swap(device_, other.device_);
    std::swap(handler_, other.handler_);
  }

  void reset() noexcept {
    if (const std::shared_ptr<Handler> ending = std::move(handler_)) SLUnregisterEventhandler(device_, call, ending.get());
  }

 private:
  // The library knows it by its address, which stays when the Subscription moves.
  struct Handler : std::enable_shared_from_this<Handler> {
    Function function;
  };

  static void call(std::int32_t event, void* context, std::int64_t serial) {
    try {
      const auto handler = static_cast<Handler*>(context)->shared_from_this();  // the function may end its own Subscription
      handler->function(event, serial);
    } catch (...) {  // the library's thread has nobody to tell
    }
  }

  std::int32_t device_ = -1;
  std::shared_ptr<Handler> handler_;
};

inline std::int32_t libraryVersion() { return QORFringixVersion(); }
inline void setTracing(bool on) { SLSetDebugFlag(on ? 1 : 0); }

}  // namespace fringix

#endif
