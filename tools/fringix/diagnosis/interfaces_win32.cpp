#include <winsock2.h>

#include <ws2tcpip.h>

#include <iphlpapi.h>

#include <algorithm>
#include <cstddef>

#include "diagnosis/interfaces.h"

namespace fringix::tool::diagnosis {
namespace {

std::string narrow(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(std::max(size, 1)), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  narrow.pop_back();
  return narrow;
}

Interface describe(const IP_ADAPTER_ADDRESSES& adapter, const IP_ADAPTER_UNICAST_ADDRESS& address) {
  const auto* socket = reinterpret_cast<const sockaddr_in*>(static_cast<const void*>(address.Address.lpSockaddr));
  const unsigned prefix = std::min<unsigned>(address.OnLinkPrefixLength, 32);
  const std::uint32_t mask = prefix == 0 ? 0 : ~std::uint32_t{0} << (32 - prefix);
  Interface place;
  place.name = narrow(adapter.FriendlyName);
  place.network = {ntohl(socket->sin_addr.s_addr), mask};
  place.loopback = adapter.IfType == IF_TYPE_SOFTWARE_LOOPBACK;
  place.linkUp = adapter.OperStatus == IfOperStatusUp;
  place.hasCable = adapter.IfType == IF_TYPE_ETHERNET_CSMACD;
  place.mtu = adapter.Mtu == 0xFFFFFFFF ? 0 : adapter.Mtu;
  if (adapter.ReceiveLinkSpeed != ~ULONG64{0}) place.megabits = static_cast<std::int64_t>(adapter.ReceiveLinkSpeed / 1000000);
  return place;
}

}  // namespace

std::vector<Interface> readInterfaces() {
  constexpr ULONG flags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
  ULONG size = 0;
  GetAdaptersAddresses(AF_INET, flags, nullptr, nullptr, &size);
  std::vector<std::byte> buffer(size + 4096);  // others come and go between the two calls
  size = static_cast<ULONG>(buffer.size());
  auto* adapter = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  if (GetAdaptersAddresses(AF_INET, flags, nullptr, adapter, &size) != NO_ERROR) return {};
  std::vector<Interface> interfaces;
  for (; adapter != nullptr; adapter = adapter->Next) {
    for (const auto* address = adapter->FirstUnicastAddress; address != nullptr; address = address->Next)
      interfaces.push_back(describe(*adapter, *address));
  }
  return interfaces;
}

}  // namespace fringix::tool::diagnosis
