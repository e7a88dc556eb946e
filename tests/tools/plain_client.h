// A client without the library, that says what it is told to.
#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "platform/socket.h"
#include "support/wire.h"

namespace fringix::test {

// Of a head at 127.0.0.3, with the beginning that all sessions have.
class PlainClient {
 public:
  PlainClient() {
    EXPECT_TRUE(socket_.connect({platform::parseIpv4("127.0.0.3"), 44330}));
    EXPECT_EQ(receive(4), integer(3300));
    say(integer(3300) + text("40MSG_SLGetMaxImageSize"));
    EXPECT_EQ(receive(12).size(), 12U);
  }
  void say(const Bytes& bytes) { EXPECT_EQ(socket_.send(bytes.data(), bytes.size()), static_cast<std::ptrdiff_t>(bytes.size())); }
  Bytes receive(std::size_t count) {
    Bytes bytes(count, '\0');
    for (std::size_t done = 0; done < count;) {
      if (socket_.waitReadable(std::chrono::seconds(20)) != platform::Readiness::ready) return bytes.substr(0, done);
      const std::ptrdiff_t size = socket_.receive(bytes.data() + done, count - done);
      if (size <= 0) return bytes.substr(0, done);
      done += static_cast<std::size_t>(size);
    }
    return bytes;
  }

 private:
  const platform::SocketLibrary library_;
  platform::Socket socket_ = platform::Socket::openStream();
};

}  // namespace fringix::test
