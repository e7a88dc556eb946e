// The trigger listener, as the receiver of datagrams and as one that follows another process.
//
// As a follower: turns, each a byte and a sender. As the receiver: datagrams, each a length, a sender and its bytes.
#include <algorithm>
#include <atomic>

#include "fuzz/input.h"
#include "fuzz/platform/network.h"
#include "fuzz/target.h"
#include "threads/gpio_thread.h"

namespace fringix::fuzz::trigger_target {

namespace {

using Arrival = platform::TriggerExchange::Arrival;
using Step = platform::TriggerExchange::Turn;

constexpr std::uint32_t head = 0x7F000002;
constexpr const char* headAddress = "127.0.0.2";

std::uint32_t sender(Input& in) { return head - 1 + in.byte() % 3; }

void follow(Input& in) {
  for (std::size_t i = in.byte() % 16; i > 0; --i) network().turns.push_back({static_cast<Step>(in.byte() % 5), sender(in)});
}

void receive(Input& in) {
  network().turns.push_back({Step::receiver});
  for (std::size_t i = in.byte() % 4; i > 0; --i) network().arrivals.push_back(static_cast<Arrival>(in.byte() % 5));
  while (!in.empty()) {
    const std::size_t size = in.byte() % 32;
    const std::uint32_t from = sender(in);
    network().datagrams.push_back({from, in.text(size)});
  }
}

bool isTrigger(const Datagram& datagram) {
  const std::string text = datagram.bytes.c_str();
  return !datagram.bytes.empty() && datagram.bytes.size() <= 18 && text.find("02UDP_GPIO") != std::string::npos;
}

std::size_t triggersOfTheHead() {
  const auto& turns = network().turns;
  const auto& datagrams = network().datagrams;
  const auto followed =
      std::count_if(turns.begin(), turns.end(), [](const Turn& t) { return t.what == Step::trigger && t.sender == head; });
  const auto received =
      std::count_if(datagrams.begin(), datagrams.end(), [](const Datagram& d) { return d.sender == head && isTrigger(d); });
  return static_cast<std::size_t>(followed + received);
}

void run(Bytes input) {
  static std::atomic<std::size_t> heard;
  const FreshNetwork fresh;
  heard = 0;
  Input in(input);
  follow(in);
  if (in.flag()) receive(in);
  const std::size_t most = triggersOfTheHead();
  const bool undisturbed = network().arrivals.empty() && network().turns.size() == 1 && network().turns[0].what == Step::receiver;
  GPIOThread listener;
  listener.setContextCallback([](void* count) { ++*static_cast<std::atomic<std::size_t>*>(count); }, &heard);
  listener.Start(headAddress);
  const std::int32_t end = listener.ThreadProc();
  require(end == 0 || end == -1, "the thread ends with one of its codes");
  require(heard <= most, "nothing but triggers of the head calls back");
  require(!undisturbed || heard == most, "every trigger of the head calls back");
  require(network().open == 0, "no socket is left");
}

const Registered target("trigger", run);

}  // namespace

}  // namespace fringix::fuzz::trigger_target
