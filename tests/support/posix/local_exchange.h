// The local socket by which the listeners of a host find each other, for programs that are no listeners.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/socket.h"

namespace fringix::test {

struct ExchangeAddress {
  static constexpr std::string_view exchangeName = "C5128585-87BE-4b48-9F65-9A4CAC572E59";
  sockaddr_un name{};
  socklen_t size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + exchangeName.size());

  ExchangeAddress() {
    name.sun_family = AF_UNIX;
    std::memcpy(name.sun_path + 1, exchangeName.data(), exchangeName.size());
  }
  const sockaddr* generic() const { return reinterpret_cast<const sockaddr*>(&name); }
};

inline platform::Socket openLocal() { return platform::Socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

// Sends bytes, and so many copies of a descriptor with them; true: all of them.
inline bool sendCopies(const platform::Socket& connection, int descriptor, std::size_t copies = 1, std::string bytes = {'\0'}) {
  std::vector<char> control(CMSG_SPACE(copies * sizeof descriptor));
  iovec content{bytes.data(), bytes.size()};
  msghdr message{};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  if (copies > 0) {
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(copies * sizeof descriptor);
    for (std::size_t i = 0; i < copies; ++i) std::memcpy(CMSG_DATA(header) + i * sizeof descriptor, &descriptor, sizeof descriptor);
  }
  return sendmsg(connection.handle(), &message, MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

}  // namespace fringix::test
