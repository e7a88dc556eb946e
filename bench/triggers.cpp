#include "triggers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "child_process.h"
#include "library_session.h"
#include "machine.h"
#include "minimal_listener.h"
#include "replay_server.h"
#include "trigger_arrival.h"

namespace fringix::bench {

namespace {

using std::chrono::milliseconds;

constexpr Head smallHead{16, 16};
constexpr std::string_view trigger = "02UDP_GPIO";
constexpr std::uint16_t portByHand = 44339;  // the library's is taken

sockaddr_in localAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = inet_addr(headAddress);
  return address;
}

Descriptor datagramSocket() { return {socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket"}; }

bool isTaken(std::uint16_t port) {
  const sockaddr_in address = localAddress(port);
  return bind(datagramSocket().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0;
}

// The head's side of a trigger.
class TriggerSender {
 public:
  explicit TriggerSender(std::uint16_t port) : socket_(datagramSocket()) {
    const sockaddr_in host = localAddress(port);
    if (connect(socket_.get(), reinterpret_cast<const sockaddr*>(&host), sizeof host) != 0) throwSystemError("trigger: connect");
  }
  bool send() const { return ::send(socket_.get(), trigger.data(), trigger.size(), 0) == static_cast<ssize_t>(trigger.size()); }

 private:
  Descriptor socket_;
};

// The listener comes to hear some time after it was started.
void awaitListener(const TriggerSender& sender, TriggerArrival& arrival) {
  constexpr int attempts = 100;
  for (int i = 0; i < attempts; ++i) {
    sender.send();  // refused while nobody has the port
    if (arrival.wait(milliseconds(50))) return;
  }
  throw std::runtime_error("nobody hears the triggers");
}

Call callOf(std::uint16_t port, TriggerArrival& arrival) {
  auto sender = std::make_shared<TriggerSender>(port);
  awaitListener(*sender, arrival);
  return [sender, &arrival] {
    if (!sender->send()) throwSystemError("trigger: send");
    if (const auto time = arrival.wait(std::chrono::seconds(1))) return *time;
    throw std::runtime_error("a trigger was lost");
  };
}

// Another process of the host, whose listener receives for all.
std::unique_ptr<ChildProcess> startReceiver() {
  auto receiver = std::make_unique<ChildProcess>([] {
    const LibrarySession session;
    for (;;) pause();
  });
  while (!isTaken(triggerPort)) std::this_thread::sleep_for(milliseconds(1));
  return receiver;
}

void noteEvent(std::int32_t event, void* arrival, std::int64_t) {
  if (event == SLEVENT_TRIGGER) static_cast<TriggerArrival*>(arrival)->note();
}

class LibraryListener {
 public:
  explicit LibraryListener(TriggerArrival& arrival) { requireSuccess(SLRegisterEventhandler(session_.handle(), noteEvent, &arrival)); }

 private:
  LibrarySession session_;
};

}  // namespace

const std::vector<TriggerComparison>& triggerComparisons() {
  static const std::vector<TriggerComparison> table = {
      {"trigger", Role::receiver, {{Metric::medianLatency, 1.15}}},
      {"trigger, following process", Role::follower, {{Metric::medianLatency, 2.00}}},
  };
  return table;
}

Measurement measure(const TriggerComparison& comparison, const Plan& plan) {
  pinTo(plan.clientCore);
  const ReplayServer server(smallHead, plan.clientCore);
  TriggerArrival arrival;
  std::unique_ptr<ChildProcess> receiver;
  std::optional<LibraryListener> library;
  std::optional<MinimalListener> standIn;
  if (comparison.role == Role::follower && !plan.againstItself) receiver = startReceiver();
  plan.againstItself ? void(standIn.emplace(triggerPort, arrival)) : void(library.emplace(arrival));
  const MinimalListener listener(portByHand, arrival);
  // A head has a processor of its own: what sends in its place must not take the core while a listener wants it.
  return std::async(
             std::launch::async,
             [&] {
               runAtIdlePriority();
               Measurement measurement = measurementOf(comparison);
               takeTurns({callOf(triggerPort, arrival), callOf(portByHand, arrival), trigger.size(), server.cpuClock()}, plan, measurement);
               return measurement;
             })
      .get();
}

}  // namespace fringix::bench
