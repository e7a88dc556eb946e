// Windows of the host and posting to them. On Windows a window is a HWND and a post is a window message. Elsewhere a window is a
// descriptor of the host, cast to a pointer: a pipe or a local socket, and a post writes one record to it.
#pragma once

#include <cstdint>

namespace fringix::platform {

using WindowHandle = void*;

// What a post writes to a descriptor, in the machine's own byte order.
struct PostedRecord {
  std::uint32_t message;
  std::uint32_t reserved;  // 0
  std::uint64_t event;
  std::int64_t parameter;
};
static_assert(sizeof(PostedRecord) == 24);

class Window {
 public:
  Window() = default;
  explicit Window(WindowHandle handle) noexcept;

  WindowHandle handle() const noexcept { return handle_; }

  // Posts without waiting and without a signal. A window that is full loses the post; one that no longer exists is passed over.
  void post(std::uint32_t message, std::uint64_t event, std::int64_t parameter) const noexcept;

 private:
  // Tells a descriptor from another file that was given its number later.
  struct Identity {
    std::uint64_t device = 0;
    std::uint64_t node = 0;
    bool operator==(const Identity&) const = default;
  };
  static Identity identityOf(WindowHandle handle) noexcept;

  WindowHandle handle_ = nullptr;
  Identity identity_;
};

}  // namespace fringix::platform
