#include "ports/trigger_port.h"

#include "platform/datagram.h"

namespace fringix::ports {

bool sendTrigger(std::uint32_t head, std::uint32_t host, std::string_view text) {
  return platform::sendDatagram(head, {host, triggerPort}, text.data(), text.size());
}

}  // namespace fringix::ports
