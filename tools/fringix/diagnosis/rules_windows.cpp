#include <algorithm>
#include <string_view>

#include "diagnosis/rule_chains.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr std::string_view udp = "17";

std::string_view valueOf(std::string_view rule, std::string_view name) {
  for (const std::string_view field : wordsOf(rule, "|")) {
    if (field.starts_with(name)) return field.substr(name.size());
  }
  return {};
}

// A rule has a field again for each further value.
template <class Fits>
bool fitsSome(std::string_view rule, std::string_view name, Fits fits) {
  bool named = false;
  for (const std::string_view field : wordsOf(rule, "|")) {
    if (!field.starts_with(name)) continue;
    named = true;
    if (fits(field.substr(name.size()))) return true;
  }
  return !named;
}

bool isRemote(std::string_view value, const Packet& packet) {
  return value == "LocalSubnet" || (parseIpv4(value.substr(0, value.find('/'))) != 0 && parseNetwork(value).contains(packet.from));
}

// "v2.31|Action=Allow|Active=TRUE|Dir=In|Protocol=17|Profile=Public|LPort=44331|RA4=192.168.0.0/255.255.255.0|App=...|Name=...|"
bool fits(std::string_view rule, std::string_view profile, const Packet& packet) {
  if (valueOf(rule, "Active=") != "TRUE" || valueOf(rule, "Dir=") != "In") return false;
  const std::string_view protocol = valueOf(rule, "Protocol=");
  if (!protocol.empty() && protocol != udp) return false;
  if (!valueOf(rule, "Svc=").empty() || !valueOf(rule, "AppPkgId=").empty()) return false;
  return fitsSome(rule, "Profile=", [&](std::string_view value) { return value == profile; }) &&
         fitsSome(rule, "LPort=", [&](std::string_view value) { return isPort(value, packet.port); }) &&
         fitsSome(rule, "RA4=", [&](std::string_view value) { return isRemote(value, packet); });
}

bool isOfProgram(std::string_view rule, std::string_view program) {
  const std::string_view app = valueOf(rule, "App=");
  return app.empty() || std::equal(app.begin(), app.end(), program.begin(), program.end(),
                                   [](unsigned char a, unsigned char b) { return (a | 0x20) == (b | 0x20); });
}

// What blocks counts before what allows.
bool drops(const std::vector<std::string_view>& lines, std::string_view profile, bool blocks, std::string_view program,
           const Packet& packet) {
  bool allowed = !blocks;
  for (const std::string_view line : lines) {
    if (!fits(line, profile, packet) || !isOfProgram(line, program)) continue;
    if (valueOf(line, "Action=") == "Block") return true;
    allowed = true;
  }
  return !allowed;
}

}  // namespace

// Lines "program C:\...\fringix.exe" and "profile Public on block", then the rules.
Judgement judgeByWindows(const std::string& rules, const Packet& packet) {
  if (packet.from >> 24 == 127) return {Fate::accepted, {}};
  const std::vector<std::string_view> lines = linesOf(rules);
  std::string_view program;
  std::string droppedIn;
  for (const std::string_view line : lines) {
    if (line.starts_with("program ")) program = line.substr(8);
    const auto words = wordsOf(line);
    if (words.size() != 4 || words[0] != "profile" || words[2] != "on") continue;
    if (drops(lines, words[1], words[3] == "block", program, packet)) droppedIn += (droppedIn.empty() ? "" : ", ") + std::string(words[1]);
  }
  return droppedIn.empty() ? Judgement{Fate::accepted, {}} : Judgement{Fate::dropped, droppedIn};
}

Judgement judge(const Firewall& firewall, const Packet& packet) {
  if (!firewall.readable) return {Fate::unknown, {}};
  switch (firewall.kind) {
    case FirewallKind::ufw:
      return judgeByUfw(firewall.text, packet);
    case FirewallKind::firewalld:
      return judgeByFirewalld(firewall.text, packet);
    case FirewallKind::nftables:
      return judgeByNftables(firewall.text, packet);
    case FirewallKind::iptables:
      return judgeByIptables(firewall.text, packet);
    case FirewallKind::windows:
      break;
  }
  return judgeByWindows(firewall.text, packet);
}

}  // namespace fringix::tool::diagnosis
