#include "threads/event_registry.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/worker.h"

namespace fringix {

void EventRegistry::addHandler(EventHandler handler, void* context) {
  const std::lock_guard guard(lock_);
  const Handler added{handler, context};
  if (std::find(handlers_.begin(), handlers_.end(), added) == handlers_.end()) handlers_.push_back(added);
}

void EventRegistry::removeHandler(EventHandler handler, void* context) {
  const std::lock_guard guard(lock_);
  const auto found = std::find(handlers_.begin(), handlers_.end(), Handler{handler, context});
  if (found == handlers_.end()) return;
  if (static_cast<std::size_t>(found - handlers_.begin()) < nextHandler_) --nextHandler_;
  handlers_.erase(found);
}

void EventRegistry::addWindow(WindowHandle window, std::uint32_t message) {
  const std::lock_guard guard(lock_);
  const EventWindow added{platform::Window(window), message};
  const auto found = std::find(windows_.begin(), windows_.end(), added);
  if (found == windows_.end()) {
    windows_.push_back(added);
  } else {
    *found = added;  // what bears this handle now may be another window than the one that bore it then
  }
}

void EventRegistry::removeWindow(WindowHandle window, std::uint32_t message) {
  const std::lock_guard guard(lock_);
  const auto found = std::find(windows_.begin(), windows_.end(), EventWindow{platform::Window(window), message});
  if (found != windows_.end()) windows_.erase(found);
}

void EventRegistry::FireEvent(std::int32_t event, std::int64_t parameter) {
  const std::lock_guard guard(lock_);
  callHandlers(event, parameter);
  if (platform::thisWorkerIsAbandoned()) return;
  for (const EventWindow& entry : windows_) entry.window.post(entry.message, static_cast<std::uint32_t>(event), parameter);
}

void EventRegistry::callHandlers(std::int32_t event, std::int64_t parameter) {
  // A handler may start a dispatch of its own.
  struct Dispatch {
    std::size_t& next;
    std::size_t outer = std::exchange(next, 0);
    ~Dispatch() { next = outer; }
  } dispatch{nextHandler_};
  while (nextHandler_ < handlers_.size() && !platform::thisWorkerIsAbandoned()) {
    const Handler handler = handlers_[nextHandler_++];
    if (handler.function != nullptr) handler.function(event, handler.context, parameter);
  }
}

}  // namespace fringix
