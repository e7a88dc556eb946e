// The port of triggers as all programs open it that share it by the named objects.
#include "platform/trigger_exchange.h"

namespace fringix::platform {

TriggerExchange::Port TriggerExchange::openPort(const SocketLibrary& library, Socket* port) noexcept {
  if (library.usable()) *port = Socket::openDatagram();
  if (!port->setReuseAddress(true)) return Port::notShared;
  return port->bind({0, triggerPort}) && port->setNonBlocking(true) ? Port::open : Port::refused;
}

}  // namespace fringix::platform
