// A network in memory, in place of the system's: what a peer says is there at once, waiting takes no time, and no thread of the library
// runs. Whatever the library does, one process can do some ten thousand times a second, and again in the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <vector>

#include "platform/ipv4_table.h"
#include "platform/trigger_exchange.h"

namespace fringix::fuzz {

inline constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

// What follows the last byte that the peer says.
enum class End { closed, reset, silence };

// What a stream socket is connected to.
struct Connection {
  std::string arriving;
  std::size_t taken = 0;  // of them
  End end = End::closed;
  std::size_t atOnce = unlimited;  // bytes that a receive gives, at most
  std::string sent;
  std::size_t room = unlimited;  // bytes that can be sent before it breaks
  bool refused = false;

  std::size_t waiting() const { return arriving.size() - taken; }
};

inline constexpr std::uint32_t firstOther = 0x7F000100;  // 127.0.1.0

struct Datagram {
  std::uint32_t sender;  // host byte order
  std::string bytes;
};

// What the listeners of a host tell each other.
struct Turn {
  platform::TriggerExchange::Turn what;
  std::uint32_t sender = 0;
};

struct Network {
  Connection connection;           // that of every stream socket, but for those to
  std::vector<Connection> others;  // the address firstOther and those behind it
  std::deque<Datagram> datagrams;
  std::vector<platform::Ipv4Row> addresses;

  std::deque<Turn> turns;  // of a follower; afterwards it is told to stop
  std::deque<platform::TriggerExchange::Arrival> arrivals;
  std::vector<std::uint32_t> told;  // what the receiver told its followers

  std::size_t open = 0;        // sockets
  bool waitedForEver = false;  // somebody waited without limit for a peer that says nothing more
  std::size_t traceLines = 0;
};

Network& network();  // of the process

// A network for one input; what an input leaves there would look like a leak.
struct FreshNetwork {
  FreshNetwork() { network() = {}; }
  ~FreshNetwork() { network() = {}; }
  FreshNetwork(const FreshNetwork&) = delete;
  FreshNetwork& operator=(const FreshNetwork&) = delete;
};

}  // namespace fringix::fuzz
