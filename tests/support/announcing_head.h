// A head that answers the announce requests of this host's own scans, with whatever datagrams a test wants it to send.
//
//   AnnouncingHead head({{"S 1234 M 1"}, {"late", 700ms}});
//
// It listens from its construction on. Requests that come over another interface than the loopback are none of its business.
#pragma once

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/socket.h"
#include "support/wire.h"

namespace fringix::test {

struct Announcement {
  Bytes bytes;
  std::chrono::milliseconds after{0};  // pause before it is sent
  std::string from{};                  // address of the sender; empty: 127.0.0.1
};

class AnnouncingHead {
 public:
  explicit AnnouncingHead(std::vector<Announcement> replies);
  ~AnnouncingHead();

  // Ends the head; the requests that it got, in order.
  const std::vector<Bytes>& requests();

 private:
  void serve();
  void answer(platform::Ipv4Endpoint client);

  platform::SocketLibrary library_;
  platform::Socket listener_;
  std::vector<Announcement> replies_;
  std::vector<Bytes> requests_;
  std::thread thread_;
};

// A reply in which the numbers stand where they belong: serial number, model code, and the seven information numbers.
Bytes announcement(int serial, int modelCode = 1, int info1 = 5);

// Whether datagrams can be sent from this address; under Wine that takes an administrator.
bool canAnswerFrom(const std::string& address);

}  // namespace fringix::test
