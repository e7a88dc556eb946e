#include <winsock2.h>

#include <ws2tcpip.h>

#include <memory>
#include <system_error>

#include "heads/host_name.h"
#include "heads/winsock_win32.h"

namespace fringix::tool {

LookUp lookUp(const std::string& name) {
  const Winsock winsock;
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(name.c_str(), nullptr, &wanted, &found);
  if (error != 0) return {{}, std::system_category().message(error)};
  if (found == nullptr) return {{}, "the system tells none"};
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
  return {inet_ntoa(reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(found->ai_addr))->sin_addr), {}};
}

}  // namespace fringix::tool
