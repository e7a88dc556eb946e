// A client of a few lines, written against the protocol alone. Waits 20 seconds at most for anything.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/socket.h"

namespace fringix::head {

class RawClient {
 public:
  // Connects, from the address `own`; throws when nobody answers.
  explicit RawClient(const std::string& address = "127.0.0.2", const std::string& own = "0.0.0.0");

  std::int32_t greet();  // gives the head's greeting, answers it

  void sendBytes(std::span<const std::uint8_t> bytes);
  void sendRaw(std::string_view bytes);
  void sendText(std::string_view text);
  void sendInts(std::initializer_list<std::int32_t> values);

  std::int32_t receiveInt();
  std::string receiveText();
  std::vector<std::uint8_t> receiveBytes(std::size_t count);
  void close() { socket_.close(); }

  bool closedByHead();  // the next thing that arrives is the end of the connection

 private:
  const platform::SocketLibrary library_;
  platform::Socket socket_;
};

}  // namespace fringix::head
