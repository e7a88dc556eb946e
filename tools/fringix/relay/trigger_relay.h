// Hears the triggers of a head on this machine, as the library's listeners do and together with them, and hands them on to the hosts of
// those who are connected through this machine.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string_view>
#include <thread>

#include "platform/event.h"
#include "platform/trigger_exchange.h"

namespace fringix::tool {

class TriggerRelay {
 public:
  // Called on the relay's thread, with what the head said; empty where another listener of this machine only told of it.
  using Heard = std::function<void(std::string_view text)>;
  // Called at most once: no trigger arrives, because another program or user has the port.
  using Deaf = std::function<void()>;

  TriggerRelay(std::uint32_t headAddress, Heard heard, Deaf deaf);
  ~TriggerRelay();
  TriggerRelay(const TriggerRelay&) = delete;
  TriggerRelay& operator=(const TriggerRelay&) = delete;

 private:
  void run() noexcept;
  void follow(platform::TriggerExchange& exchange);
  void receive(platform::TriggerExchange& exchange);
  void takeDatagram(platform::TriggerExchange& exchange, platform::Socket& socket);
  void tellDeaf() noexcept;

  const std::uint32_t headAddress_;
  const Heard heard_;
  Deaf deaf_;
  platform::ManualResetEvent stop_;
  std::thread thread_;
};

}  // namespace fringix::tool
