// The event handlers and event windows of one session. Dispatches and changes of the lists run one after the other; a handler may change
// the lists on its own thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "device/ICameraDevice.h"
#include "platform/reentrant_lock.h"
#include "platform/window.h"

namespace fringix {

enum Event : std::int32_t { measurementFinished = 0, triggerRaised = 1 };

class EventRegistry {
 public:
  // A pair stands at most once: adding it again changes nothing, removing one that is not there changes nothing.
  void addHandler(EventHandler handler, void* context);
  void removeHandler(EventHandler handler, void* context);
  void addWindow(WindowHandle window, std::uint32_t message);
  void removeWindow(WindowHandle window, std::uint32_t message);

  // Calls every handler, then posts to every window, in the order of registration. Windows that no longer exist stay registered.
  // What a handler throws ends the dispatch and goes on to the caller.
  void FireEvent(std::int32_t event, std::int64_t parameter);

 private:
  struct Handler {
    EventHandler function;
    void* context;
    bool operator==(const Handler&) const = default;
  };
  struct EventWindow {
    platform::Window window;
    std::uint32_t message;
    bool operator==(const EventWindow& other) const noexcept {
      return window.handle() == other.window.handle() && message == other.message;
    }
  };

  struct Dispatch;

  void callHandlers(std::int32_t event, std::int64_t parameter);

  std::vector<Handler> handlers_;
  std::vector<EventWindow> windows_;
  Dispatch* dispatch_ = nullptr;  // the innermost; known so that handlers may remove handlers
  platform::ReentrantLock lock_;
};

}  // namespace fringix
