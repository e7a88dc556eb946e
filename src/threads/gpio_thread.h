// Listens for the triggers of one head: UDP datagrams that the head sends to the host. All listeners of the host share the one port; see
// platform::TriggerExchange. A trigger of this head goes, on this thread, to the callbacks, the trigger window and the owner.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "device/ICameraDevice.h"
#include "platform/trigger_exchange.h"
#include "threads/thread_mgr.h"
#include "threads/trigger_callback_class.h"

namespace fringix {

class GPIOThread : public ThreadMgr {
 public:
  ~GPIOThread() override { Stop(); }

  // Listens for the head at this address (the text that the session was opened with: a trigger's sender is compared with it as text).
  // 0, or the system's error as an HRESULT.
  std::int32_t Start(const std::string& headAddress, std::shared_ptr<void> share = {});

  void setOwner(TriggerCallbackClass* owner) noexcept { owner_ = owner; }  // null: none

  // Take no lock: a trigger that is being dispatched may see the old value or the new one; kept on purpose.
  void setGpioCallback(TriggerCallback callback) noexcept { gpioCallback_ = callback; }
  void setContextCallback(TriggerCallback callback, void* context) noexcept;
  void setNotifyWindow(WindowHandle window, std::uint32_t message) noexcept;

  std::int32_t ThreadProc() override;

  // Notifies whoever is registered if the address, in host byte order, is this head's.
  void DispatchTrigger(std::uint32_t address);

 private:
  enum EndCode : std::int32_t { stopped = 0, failed = -1 };

  std::int32_t listen(platform::TriggerExchange& exchange);
  std::int32_t follow(platform::TriggerExchange& exchange);
  std::int32_t receive(platform::TriggerExchange& exchange);
  std::int32_t serve(platform::TriggerExchange& exchange, platform::Socket& socket);
  void passOn(platform::TriggerExchange& exchange, std::uint32_t address);
  static std::int32_t endByException() noexcept;

  std::atomic<TriggerCallback> gpioCallback_{nullptr};
  std::atomic<WindowHandle> notifyWindow_{nullptr};
  std::atomic<std::uint32_t> notifyMessage_{0};
  std::atomic<void*> callbackContext_{nullptr};
  std::atomic<TriggerCallback> contextCallback_{nullptr};
  std::string headAddress_;
  std::atomic<TriggerCallbackClass*> owner_{nullptr};
};

}  // namespace fringix
