// What a head tells when its GPIO input is triggered, and to whom: one datagram to the host of each connected client. It comes from
// the address under which the client knows the head, because that is all that tells one head from another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>

#include "platform/socket.h"

namespace fringix::head {

// A connection as its two addresses, in host byte order.
struct Link {
  std::uint32_t head = 0;
  std::uint32_t host = 0;
  auto operator<=>(const Link&) const = default;
};

// Safe to use from several threads.
class TriggerOutput {
 public:
  // A head on a loopback address tells this machine while it has no client.
  explicit TriggerOutput(const std::string& headAddress);

  // Tells every host once, however many clients it has. Gives the number of datagrams sent.
  std::size_t raise() const;

  // A client that is told of triggers as long as this lives.
  class Client {
   public:
    Client(TriggerOutput& output, Link link);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

   private:
    TriggerOutput& output_;
    Link link_;
  };

 private:
  std::set<Link> receivers() const;

  const platform::SocketLibrary library_;
  const std::uint32_t headAddress_;
  mutable std::mutex mutex_;
  std::multiset<Link> clients_;
};

}  // namespace fringix::head
