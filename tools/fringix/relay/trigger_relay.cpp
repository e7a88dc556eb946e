#include "relay/trigger_relay.h"

#include <array>
#include <exception>
#include <utility>

#include "ports/trigger_port.h"

namespace fringix::tool {
namespace {

using platform::TriggerExchange;

constexpr std::size_t longestTrigger = 18;

}  // namespace

TriggerRelay::TriggerRelay(std::uint32_t headAddress, Heard heard, Deaf deaf)
    : headAddress_(headAddress), heard_(std::move(heard)), deaf_(std::move(deaf)), thread_([this] { run(); }) {}

TriggerRelay::~TriggerRelay() {
  stop_.set();
  thread_.join();
}

void TriggerRelay::run() noexcept {
  try {
    TriggerExchange exchange;
    if (exchange.openBlock() == TriggerExchange::Block::none || !exchange.openLock() || !exchange.openNotification()) return tellDeaf();
    follow(exchange);
  } catch (const std::exception&) {
    tellDeaf();
  }
}

void TriggerRelay::follow(TriggerExchange& exchange) {
  for (;;) {
    std::uint32_t sender = 0;
    switch (exchange.waitForTurn(stop_)) {
      case TriggerExchange::Turn::stop:
        return;
      case TriggerExchange::Turn::receiver:
        receive(exchange);
        return exchange.resign();
      case TriggerExchange::Turn::trigger:
        if (exchange.hasView() && exchange.readSender(&sender) && sender == headAddress_) heard_({});
        break;
      case TriggerExchange::Turn::noPort:
        tellDeaf();
        break;
      case TriggerExchange::Turn::failed:
        return tellDeaf();
    }
  }
}

// The port is closed before another listener can become the receiver.
void TriggerRelay::receive(TriggerExchange& exchange) {
  const platform::SocketLibrary library;
  platform::Socket socket;
  if (exchange.openPort(library, &socket) != TriggerExchange::Port::open || !exchange.openArrival()) return tellDeaf();
  for (;;) {
    switch (exchange.waitForDatagram(stop_, socket)) {
      case TriggerExchange::Arrival::stop:
        return;
      case TriggerExchange::Arrival::alone:
        break;
      case TriggerExchange::Arrival::datagram:
        takeDatagram(exchange, socket);
        break;
      default:
        return tellDeaf();
    }
  }
}

// The other listeners of the machine are told of every head's.
void TriggerRelay::takeDatagram(TriggerExchange& exchange, platform::Socket& socket) {
  std::array<char, longestTrigger + 2> bytes{};
  platform::Ipv4Endpoint sender;
  const std::ptrdiff_t size = socket.receiveFrom(bytes.data(), bytes.size(), &sender);
  exchange.resetArrival();
  const std::string_view text(bytes.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
  if (text.size() > longestTrigger || text.find(ports::triggerText) == std::string::npos) return;
  exchange.writeSender(sender.address);
  exchange.announce();
  exchange.settle();
  if (sender.address == headAddress_) heard_(text);
}

void TriggerRelay::tellDeaf() noexcept {
  try {
    if (deaf_) std::exchange(deaf_, nullptr)();
  } catch (const std::exception&) {  // no memory to say it
  }
}

}  // namespace fringix::tool
