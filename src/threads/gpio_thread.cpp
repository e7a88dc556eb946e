#include "threads/gpio_thread.h"

#include <array>
#include <cstring>
#include <utility>

#include "diagnosis/trace.h"
#include "platform/window.h"

namespace fringix {

namespace {

using platform::TriggerExchange;

constexpr const char* triggerMark = "02UDP_GPIO";
constexpr std::size_t receivedAtMost = 20;
constexpr std::ptrdiff_t longestTrigger = 18;

// The sender of a trigger, if that is what the next datagram is.
bool takeTrigger(platform::Socket& socket, std::uint32_t* sender) {
  std::array<char, receivedAtMost + 1> text{};
  platform::Ipv4Endpoint peer;
  const std::ptrdiff_t size = socket.receiveFrom(text.data(), receivedAtMost, &peer);
  if (size <= 0 || size > longestTrigger) return false;
  text[static_cast<std::size_t>(size)] = '\0';
  *sender = peer.address;
  return std::strstr(text.data(), triggerMark) != nullptr;
}

bool openBlock(TriggerExchange& exchange) {
  const TriggerExchange::Block block = exchange.openBlock();
  if (block == TriggerExchange::Block::none) {
    trace("Could not create file mapping object (%d).\n", exchange.lastError());
    trace("GPIOThread: Cannot access shared memory");
  } else if (block == TriggerExchange::Block::noView) {
    trace("Could not map view of file (%d).\n", exchange.lastError());
  }
  return block != TriggerExchange::Block::none;
}

std::uint32_t announcedSender(TriggerExchange& exchange) {
  std::uint32_t sender = 0xFFFFFFFF;  // no head's
  if (exchange.hasView() && !exchange.readSender(&sender)) trace("GPIOThread: Failed to read from shared memory.");
  return sender;
}

bool openPort(TriggerExchange& exchange, const platform::SocketLibrary& library, platform::Socket* socket) {
  const TriggerExchange::Port port = exchange.openPort(library, socket);
  if (port == TriggerExchange::Port::notShared) trace("ERROR: setsockopt for GPIO-socket failed");
  if (port == TriggerExchange::Port::refused) trace("ERROR: openPort for GPIO-socket failed");
  return port == TriggerExchange::Port::open;
}

}  // namespace

std::int32_t GPIOThread::Start(const std::string& headAddress, std::shared_ptr<void> share) {
  headAddress_ = headAddress;
  const std::uint32_t error = ThreadMgr::Start(std::move(share));
  const auto result = static_cast<std::int32_t>(error);
  return result <= 0 ? result : static_cast<std::int32_t>(0x80070000U | (error & 0xFFFFU));
}

void GPIOThread::setContextCallback(TriggerCallback callback, void* context) noexcept {
  callbackContext_ = context;
  contextCallback_ = callback;
}

void GPIOThread::setNotifyWindow(WindowHandle window, std::uint32_t message) noexcept {
  notifyWindow_ = window;
  notifyMessage_ = message;
}

std::int32_t GPIOThread::ThreadProc() {
  trace("GPIOThread: ThreadProc started");
  try {
    TriggerExchange exchange;
    return listen(exchange);
  } catch (...) {
    return endByException();
  }
}

std::int32_t GPIOThread::endByException() noexcept {
  trace("GPIOThread: someone raised an exception, returning from ThreadProc\n");
  return failed;
}

std::int32_t GPIOThread::listen(TriggerExchange& exchange) {
  if (!openBlock(exchange)) return stopped;  // not a failure code; kept on purpose
  if (!exchange.openLock()) {
    trace("ERROR: CreateMutex for udpmutex failed");
    return failed;
  }
  if (!exchange.openNotification()) {
    trace("ERROR: CreateEvent for gpio_event failed");
    return failed;
  }
  return follow(exchange);
}

std::int32_t GPIOThread::follow(TriggerExchange& exchange) {
  while (!platform::thisWorkerIsAbandoned()) {
    switch (exchange.waitForTurn(stopEvent())) {
      case TriggerExchange::Turn::receiver:
        return receive(exchange);
      case TriggerExchange::Turn::stop:
        trace("GPIOThread: returning from ThreadProc");
        return stopped;
      case TriggerExchange::Turn::trigger:
        DispatchTrigger(announcedSender(exchange));
        break;
      case TriggerExchange::Turn::noPort:
        trace("ERROR: openPort for GPIO-socket failed");
        trace("GPIOThread: another program or user has UDP port %i, no triggers until it is free", int{platform::triggerPort});
        break;
      case TriggerExchange::Turn::failed:
        trace("ERROR: WaitForMultipleObjects in GPIO_Thread failed");
        return failed;
    }
  }
  return failed;
}

std::int32_t GPIOThread::receive(TriggerExchange& exchange) {
  const platform::SocketLibrary library;
  // The port is closed before another listener can become the receiver and bind it.
  struct Resignation {
    TriggerExchange& exchange;
    ~Resignation() { exchange.resign(); }
  } const resignation{exchange};
  platform::Socket socket;
  if (!openPort(exchange, library, &socket) || !exchange.openArrival()) {
    exchange.resign();  // here before the port is closed; kept on purpose
    return failed;
  }
  try {
    return serve(exchange, socket);
  } catch (...) {
    return endByException();
  }
}

std::int32_t GPIOThread::serve(TriggerExchange& exchange, platform::Socket& socket) {
  while (!platform::thisWorkerIsAbandoned()) {
    switch (exchange.waitForDatagram(stopEvent(), socket)) {
      case TriggerExchange::Arrival::stop:
        trace("GPIOThread: returning from ThreadProc");
        return stopped;
      case TriggerExchange::Arrival::noSelection:
        trace("GPIOThread: Cannot select FD_READ, returning from thread.");
        return failed;
      case TriggerExchange::Arrival::failed:
        trace("GPIOThread: error while waiting for udp-event, returning from ThreadProc");
        return failed;
      case TriggerExchange::Arrival::alone:
        trace("GPIOThread: another program or user has the name of the listeners, no triggers for other sessions until it is free");
        continue;
      case TriggerExchange::Arrival::datagram:
        break;
    }
    trace("GPIOThread: Trigger occured!");
    std::uint32_t sender = 0;
    const bool trigger = takeTrigger(socket, &sender);
    exchange.resetArrival();  // also for what is ignored: it must not wake the listener twice
    if (trigger) passOn(exchange, sender);
  }
  return failed;
}

// The announcement lasts as long as this thread's own dispatch: a follower that is quicker takes it for a second trigger; kept on
// purpose. It ends when a callback throws, too: followers would take it for triggers without end.
void GPIOThread::passOn(TriggerExchange& exchange, std::uint32_t address) {
  if (!exchange.writeSender(address)) trace("GPIOThread: Failed to write to the view.");
  struct Announcement {
    TriggerExchange& exchange;
    explicit Announcement(TriggerExchange& used) : exchange(used) { exchange.announce(); }
    ~Announcement() { exchange.settle(); }
  } const announcement(exchange);
  DispatchTrigger(address);
}

void GPIOThread::DispatchTrigger(std::uint32_t address) {
  if (platform::thisWorkerIsAbandoned()) return;
  if (platform::formatIpv4(address) != headAddress_) return;
  if (const TriggerCallback callback = gpioCallback_) callback(nullptr);
  if (platform::thisWorkerIsAbandoned()) return;
  if (const TriggerCallback callback = contextCallback_) callback(callbackContext_);
  if (platform::thisWorkerIsAbandoned()) return;
  void* const window = notifyWindow_;
  if (const std::uint32_t message = notifyMessage_; window != nullptr && message != 0) platform::Window(window).post(message, 0, 0);
  if (TriggerCallbackClass* owner = owner_) owner->OnTrigger();
}

}  // namespace fringix
