// The TCP connection to a head and the encoding of what crosses it: integers are 4 bytes, least significant first; a string is its
// length in 6 characters ("%6d") and its bytes; a block is its bytes. Every operation gives 0, or -1 on a failure, after which the
// two sides may be out of step and the connection is of no further use. Not thread safe: the owning session's lock guards it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "net/my_socket.h"

namespace fringix {

class myTcpSocket : public mySocket {
 public:
  virtual int ConnectWithTimeout(const std::string& address, std::uint32_t seconds);  // seconds: how long to wait at most
  virtual int Connect(const std::string& address);                                    // blocks until the platform gives up

  int Create();
  bool valid() const noexcept { return socket_.valid(); }
  platform::Socket::Handle handle() const noexcept { return socket_.handle(); }
  void enableKeepAlive() noexcept;
  int setNonBlocking(bool on);

  // Sends wait for a peer that takes something at least once in the longest pause; on a non-blocking socket, for nobody else.
  int SendString(std::string_view text);
  int SendBytes(const void* buffer, std::size_t count);
  int ReceiveInt(std::int32_t* out);
  int ReceiveString(std::string* out);
  int ReceiveBytes(void* buffer, std::size_t count);

  // 1 readable, 0 timed out, -1 error.
  int WaitReadable(std::uint32_t seconds) const;

  // Whether bytes are on their way that the peer's system has yet to confirm.
  bool hasUnconfirmed() const noexcept { return socket_.hasUnconfirmed(); }

 private:
  std::ptrdiff_t sendSome(const void* data, std::size_t count);
  std::ptrdiff_t receiveSome(void* buffer, std::size_t count);
};

}  // namespace fringix
