#include "heads/udp_table.h"

#include <sstream>
#include <string>

namespace fringix::tool {

// "17: 00000000:AD2B 00000000:0000 07 00000000:00000000 00:00000000 00000000  1000        0 12345 2 ..."
std::vector<UdpSocket> readUdpTable(std::istream& table, std::uint16_t port) {
  std::vector<UdpSocket> sockets;
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string skipped;
    std::string address;
    UdpSocket socket;
    fields >> skipped >> address >> skipped >> skipped >> skipped >> skipped >> skipped >> socket.user >> skipped >> socket.inode;
    const std::size_t colon = address.find(':');
    if (!fields || colon == std::string::npos) continue;
    std::istringstream digits(address.substr(colon + 1));
    std::uint32_t number = 0;
    if (digits >> std::hex >> number && number == port) sockets.push_back(socket);
  }
  return sockets;
}

}  // namespace fringix::tool
