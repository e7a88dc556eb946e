#include "heads/probe.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>

#include "heads/networks.h"

namespace fringix::tool {
namespace {

using Outcome = BoundedConnection::Outcome;

constexpr std::size_t greetingSize = 4;

Reach reachAfter(Outcome failedConnect) {
  switch (failedConnect) {
    case Outcome::refused:
      return Reach::refused;
    case Outcome::unreachable:
      return Reach::unreachable;
    case Outcome::timedOut:
      return Reach::timedOut;
    case Outcome::reset:  // by somebody who had accepted it
      return Reach::closed;
    default:
      return Reach::failed;
  }
}

// A head says four bytes, whichever, and waits then. What says more is something else.
Finding readGreeting(BoundedConnection& connection, BoundedConnection::Clock::time_point until) {
  std::array<char, greetingSize + 1> greeting{};
  for (std::size_t received = 0; received != greetingSize;) {
    std::size_t size = greeting.size() - received;
    const Outcome outcome = connection.receive(greeting.data() + received, size, until);
    if (outcome == Outcome::timedOut) return {received == 0 ? Reach::silent : Reach::noHead, {}};
    if (outcome != Outcome::done || size == 0) return {received == 0 ? Reach::closed : Reach::noHead, {}};
    received += size;
    if (received > greetingSize) return {Reach::noHead, {}};
  }
  return {Reach::head, {}};
}

std::string networksOfThisMachine() {
  const std::vector<std::string> networks = searchedNetworks();
  return networks.empty() ? "This machine has no IPv4 network." : fmt::format("This machine is in {}.", fmt::join(networks, ", "));
}

std::string inSeconds(std::chrono::milliseconds time) { return fmt::format("{:g} s", std::chrono::duration<double>(time).count()); }

}  // namespace

Finding greet(BoundedConnection& connection, const std::string& address, std::chrono::milliseconds limit,
              BoundedConnection::Clock::time_point* connected) {
  const auto until = BoundedConnection::Clock::now() + limit;
  const Outcome outcome = connection.connect(address, commandPort, until);
  if (outcome != Outcome::done) return {reachAfter(outcome), connection.reason()};
  if (connected != nullptr) *connected = BoundedConnection::Clock::now();
  return readGreeting(connection, until);
}

Finding probe(const std::string& address, std::chrono::milliseconds limit) {
  BoundedConnection connection;
  return greet(connection, address, limit);
}

Explanation explain(const Finding& finding, const std::string& address, std::chrono::milliseconds limit) {
  const std::string place = fmt::format("{}:{}", address, commandPort);
  switch (finding.reach) {
    case Reach::head:
      return {fmt::format("a head answers at {}", place), {}};
    case Reach::refused:
      return {fmt::format("{} refuses the connection: no head serves it", place),
              "Check the address. If it is the head's, wait until the head has started, or switch it off and on again.", "refused"};
    case Reach::unreachable:
      return {fmt::format("{} cannot be reached: {}", place, finding.reason),
              fmt::format("Check the cable and the address. {}", networksOfThisMachine()), "unreachable"};
    case Reach::timedOut:
      return {fmt::format("nothing answers at {} within {}", place, inSeconds(limit)),
              "Check the address, that the head is on and connected, and that no firewall is in between. --timeout waits longer.",
              "timed-out"};
    case Reach::silent:
      return {fmt::format("{} accepts the connection, but does not greet within {}", place, inSeconds(limit)),
              "Check the address. If it is the head's, the head hangs: switch it off and on again.", "silent"};
    case Reach::closed:
      return {fmt::format("{} accepts the connection and ends it at once", place),
              "Check the address. If it is the head's, other programs may have taken all its connections: end some of them.", "closed"};
    case Reach::noHead:
      return {fmt::format("{} answers, but is no head", place),
              "Another program serves that port there: check the address. \"fringix list\" shows the heads that answer.", "no-head"};
    case Reach::failed:
      break;
  }
  return {fmt::format("connecting to {} failed: {}", place, finding.reason),
          "This machine did not even try: check its limits, its firewall and its network settings.", "system"};
}

}  // namespace fringix::tool
