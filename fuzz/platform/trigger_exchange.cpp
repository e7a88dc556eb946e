#include "platform/trigger_exchange.h"

#include "fuzz/platform/network.h"

namespace fringix::platform {

struct TriggerExchange::Native {
  std::uint32_t sender = 0;
};

TriggerExchange::TriggerExchange() : native_(std::make_unique<Native>()) {}
TriggerExchange::~TriggerExchange() = default;

TriggerExchange::Block TriggerExchange::openBlock() noexcept { return Block::ready; }
bool TriggerExchange::openLock() noexcept { return true; }
bool TriggerExchange::openNotification() noexcept { return true; }
std::uint32_t TriggerExchange::lastError() const noexcept { return 0; }
bool TriggerExchange::hasView() const noexcept { return true; }

TriggerExchange::Turn TriggerExchange::waitForTurn(const ManualResetEvent&) noexcept {
  auto& turns = fuzz::network().turns;
  if (turns.empty()) return Turn::stop;
  const fuzz::Turn next = turns.front();
  turns.pop_front();
  native_->sender = next.sender;
  return next.what;
}

bool TriggerExchange::readSender(std::uint32_t* address) noexcept {
  *address = native_->sender;
  return true;
}

TriggerExchange::Port TriggerExchange::openPort(const SocketLibrary&, Socket* port) noexcept {
  *port = Socket::openDatagram();
  return Port::open;
}

bool TriggerExchange::openArrival() noexcept { return true; }

TriggerExchange::Arrival TriggerExchange::waitForDatagram(const ManualResetEvent&, const Socket&) noexcept {
  fuzz::Network& network = fuzz::network();
  if (network.arrivals.empty()) return network.datagrams.empty() ? Arrival::stop : Arrival::datagram;
  const Arrival next = network.arrivals.front();
  network.arrivals.pop_front();
  return next;
}

void TriggerExchange::resetArrival() noexcept {}

bool TriggerExchange::writeSender(std::uint32_t address) noexcept {
  native_->sender = address;
  return true;
}

void TriggerExchange::announce() noexcept { fuzz::network().told.push_back(native_->sender); }
void TriggerExchange::settle() noexcept {}
void TriggerExchange::resign() noexcept {}

}  // namespace fringix::platform
