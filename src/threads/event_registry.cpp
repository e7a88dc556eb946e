#include "threads/event_registry.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/worker.h"

namespace fringix {

// One under way; a handler may start another one inside it.
struct EventRegistry::Dispatch {
  explicit Dispatch(EventRegistry& of) : registry(of), outer(std::exchange(of.dispatch_, this)) {}
  ~Dispatch() { registry.dispatch_ = outer; }
  Dispatch(const Dispatch&) = delete;
  Dispatch& operator=(const Dispatch&) = delete;

  EventRegistry& registry;
  Dispatch* const outer;
  std::size_t next = 0;  // handler to be called
};

void EventRegistry::addHandler(EventHandler handler, void* context) {
  const std::lock_guard guard(lock_);
  const Handler added{handler, context};
  if (std::find(handlers_.begin(), handlers_.end(), added) == handlers_.end()) handlers_.push_back(added);
}

void EventRegistry::removeHandler(EventHandler handler, void* context) {
  const std::lock_guard guard(lock_);
  const auto found = std::find(handlers_.begin(), handlers_.end(), Handler{handler, context});
  if (found == handlers_.end()) return;
  const auto place = static_cast<std::size_t>(found - handlers_.begin());
  for (Dispatch* dispatch = dispatch_; dispatch != nullptr; dispatch = dispatch->outer) {
    if (place < dispatch->next) --dispatch->next;
  }
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
  Dispatch dispatch(*this);
  while (dispatch.next < handlers_.size() && !platform::thisWorkerIsAbandoned()) {
    const Handler handler = handlers_[dispatch.next++];
    if (handler.function != nullptr) handler.function(event, handler.context, parameter);
  }
}

}  // namespace fringix
