// What the rules of a firewall do with a datagram that comes to this machine, as far as they can be understood.
#pragma once

#include <cstdint>
#include <string>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

// A UDP datagram that belongs to nothing that this machine has asked for before, as far as a firewall can tell.
struct Packet {
  std::string interface;
  std::uint32_t from = 0;
  std::uint16_t port = 0;  // of this machine
};

enum class Fate { accepted, dropped, unknown };

struct Judgement {
  Fate fate = Fate::unknown;
  std::string place;  // the chain, zone or profile that drops it, in the words of the firewall's own tool
};

Judgement judge(const Firewall& firewall, const Packet& packet);

Judgement judgeByNftables(const std::string& ruleset, const Packet& packet);  // of "nft list ruleset"
Judgement judgeByIptables(const std::string& rules, const Packet& packet);    // of "iptables-save -t filter"
Judgement judgeByUfw(const std::string& status, const Packet& packet);        // of "ufw status verbose"
Judgement judgeByFirewalld(const std::string& zones, const Packet& packet);   // of "firewall-cmd --get-default-zone --list-all-zones"
Judgement judgeByWindows(const std::string& rules, const Packet& packet);     // see firewall_reading_win32.cpp

}  // namespace fringix::tool::diagnosis
