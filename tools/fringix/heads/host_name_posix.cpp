#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <system_error>

#include "heads/host_name.h"

namespace fringix::tool {

LookUp lookUp(const std::string& name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(name.c_str(), nullptr, &wanted, &found);
  if (error != 0) return {{}, error == EAI_SYSTEM ? std::system_category().message(errno) : gai_strerror(error)};
  if (found == nullptr) return {{}, "the system tells none"};
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(found->ai_addr))->sin_addr, text, sizeof text);
  return {text, {}};
}

}  // namespace fringix::tool
