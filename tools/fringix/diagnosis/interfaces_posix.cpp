#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "diagnosis/interfaces.h"

namespace fringix::tool::diagnosis {
namespace {

std::uint32_t ipv4(const sockaddr* address) {
  return address == nullptr ? 0 : ntohl(reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(address))->sin_addr.s_addr);
}

// What the system's drivers tell of interfaces, asked through any socket.
class Driver {
 public:
  Driver() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
  ~Driver() { close(socket_); }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  void complete(Interface& place) const {
    ifreq request = named(place.name);
    if (ioctl(socket_, SIOCGIFMTU, &request) == 0) place.mtu = request.ifr_mtu;
    ethtool_drvinfo driver{};
    driver.cmd = ETHTOOL_GDRVINFO;
    place.hasCable = ask(place.name, driver) && !isSoftware(driver.driver);
    ethtool_cmd link{};
    link.cmd = ETHTOOL_GSET;
    if (!ask(place.name, link)) return;
    const std::uint32_t speed = ethtool_cmd_speed(&link);
    if (speed != 0 && speed != static_cast<std::uint32_t>(SPEED_UNKNOWN)) place.megabits = speed;
    place.halfDuplex = link.duplex == DUPLEX_HALF;
  }

 private:
  static ifreq named(const std::string& name) {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
  }

  template <class Command>
  bool ask(const std::string& name, Command& command) const {
    ifreq request = named(name);
    request.ifr_data = reinterpret_cast<char*>(&command);
    return ioctl(socket_, SIOCETHTOOL, &request) == 0;
  }

  static bool isSoftware(std::string_view driver) {
    constexpr std::string_view software[] = {
        "tun", "veth", "bridge", "dummy", "bonding", "team", "macvlan", "ipvlan", "802.1Q VLAN Support"};
    return std::find(std::begin(software), std::end(software), driver) != std::end(software);
  }

  int socket_;
};

}  // namespace

std::vector<Interface> readInterfaces() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) return {};
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, &freeifaddrs);
  const Driver driver;
  std::vector<Interface> interfaces;
  for (const ifaddrs* row = first; row != nullptr; row = row->ifa_next) {
    if (row->ifa_addr == nullptr || row->ifa_addr->sa_family != AF_INET) continue;
    Interface place;
    place.name = row->ifa_name;
    place.network = {ipv4(row->ifa_addr), ipv4(row->ifa_netmask)};
    place.loopback = (row->ifa_flags & IFF_LOOPBACK) != 0;
    place.linkUp = (row->ifa_flags & IFF_RUNNING) != 0;
    driver.complete(place);
    interfaces.push_back(std::move(place));
  }
  return interfaces;
}

}  // namespace fringix::tool::diagnosis
