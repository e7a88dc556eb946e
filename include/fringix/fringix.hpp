// fringix.hpp - a thin C++ face of the C interface in fringix.h (C++17 or later, header only).
//
//   fringix::Device head("192.168.0.10");
//   fringix::Image picture = head.liveImage();
//
// What holds for the C interface holds here; fringix.h tells it per function. What is different:
//
// - A failure is an exception of type fringix::Error instead of a status code.
// - A session ends with its Device. Opening and closing (also by leaving a scope) must not run while another thread is inside the
//   library.
// - Member functions are const where they leave the Device as it is, whatever they do to the head. Like the commands behind them
//   they may be called from any number of threads.
#ifndef FRINGIX_FRINGIX_HPP
#define FRINGIX_FRINGIX_HPP

#include <cstddef>
#include <cstdint>
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

struct Size {
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

struct Key {
  std::int32_t serial = 0;
  std::int32_t protocolVersion = 0;
  std::string address;
};

// A session with one head. Moving from a Device leaves it closed; every command to a closed Device throws SLUNKNOWN_DEVICE_ID.
class Device {
 public:
  // Blocks while connecting: up to minutes where nothing answers.
  explicit Device(const std::string& address) { check("SLDevAlloc", SLDevAlloc(address.c_str(), &handle_)); }
  static Device open(const std::string& address) { return Device(address); }

  ~Device() {
    if (isOpen()) SLDevFree(handle_);
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
    if (isOpen()) check("SLDevFree", SLDevFree(std::exchange(handle_, closedHandle)));
  }

  Key key() const {
    const auto entry = get<DeviceKeyEntry>("SLGetDevKey", SLGetDevKey);
    return {entry.serial, entry.info1, entry.ipAddress};
  }

  // Throw SLSYSTEM_ERROR once the connection is lost: the sizes are unknown then.
  Size cameraSize() const { return size("SLGetCameraSize", SLGetCameraSize); }
  Size projectorSize() const { return size("SLGetProjectorSize", SLGetProjectorSize); }

  // The camera's current picture. The second form reuses the memory of `image`.
  Image liveImage() const {
    Image image;
    liveImage(image);
    return image;
  }
  void liveImage(Image& image) const {
    image.resize(cameraSize());
    call("SLGetLiveImage", SLGetLiveImage, image.pixels.data(), image.width, image.height);
  }

 private:
  static constexpr std::int32_t closedHandle = -1;
  static constexpr std::uint32_t unknownSize = 0xFFFFFFFF;

  // One command: the C function with this session's handle before its other arguments.
  template <class Function, class... Arguments>
  void call(const char* operation, Function function, Arguments... arguments) const {
    check(operation, function(handle_, arguments...));
  }

  // One command whose last parameter is a pointer to its result.
  template <class Value, class Function, class... Arguments>
  Value get(const char* operation, Function function, Arguments... arguments) const {
    Value value{};
    call(operation, function, arguments..., &value);
    return value;
  }

  template <class Function>
  Size size(const char* operation, Function function) const {
    Size size;
    call(operation, function, &size.width, &size.height);
    if (size.width == unknownSize || size.height == unknownSize) throw Error(operation, SLSYSTEM_ERROR);
    return size;
  }

  std::int32_t handle_ = closedHandle;
};

inline std::int32_t libraryVersion() { return QORFringixVersion(); }
inline void setTracing(bool on) { SLSetDebugFlag(on ? 1 : 0); }

}  // namespace fringix

#endif
