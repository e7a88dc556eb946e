// The firewalls that are told of services and zones, and make rules of them.
#include <algorithm>
#include <string_view>

#include "diagnosis/rule_chains.h"

namespace fringix::tool::diagnosis {
namespace {

using Words = std::vector<std::string_view>;

bool has(std::string_view text, std::string_view part) { return text.find(part) != std::string::npos; }

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// What stands behind a word on its line.
std::string_view behind(std::string_view text, std::string_view word) {
  const std::size_t found = text.find(word);
  if (found == std::string::npos) return {};
  text.remove_prefix(found + word.size());
  return trimmed(text.substr(0, text.find('\n')));
}

// "44331/udp", "44330:44332/udp", "53,44331/udp"; a port without a protocol is both.
bool isPortOfUdp(std::string_view text, std::uint16_t port) {
  const std::size_t slash = text.find('/');
  if (slash != std::string::npos && text.substr(slash + 1) != "udp") return false;
  return hasPort(text.substr(0, slash), port);
}

// The left column: "44331/udp on eth0", "Anywhere", "192.168.0.1 44331/udp". Names are of services that are not ours.
bool isToUs(std::string_view to, const Packet& packet) {
  Words words = wordsOf(to);
  if (words.size() >= 2 && words[words.size() - 2] == "on") {
    if (words.back() != packet.interface) return false;
    words.resize(words.size() - 2);
  }
  if (words.size() > 1 && parseIpv4(words.front()) != 0) words.erase(words.begin());
  if (words.size() != 1) return false;
  if (isPortOfUdp(words[0], packet.port)) return true;
  std::string_view all = words[0];
  if (all.ends_with("/udp")) all.remove_suffix(4);
  return all == "Anywhere" || parseIpv4(all) != 0;
}

// The right column: "Anywhere", "192.168.0.0/24", "192.168.0.0/24/udp", with "(v6)" for those of the other family.
bool isFromThere(std::string_view from, const Packet& packet) {
  const Words words = wordsOf(from);
  if (words.empty() || has(from, "(v6)")) return false;
  std::string_view source = words.front();
  if (source.ends_with("/tcp")) return false;
  if (source.ends_with("/udp")) source.remove_suffix(4);
  return source == "Anywhere" || (parseIpv4(source.substr(0, source.find('/'))) != 0 && parseNetwork(source).contains(packet.from));
}

struct Zone {
  std::string_view name;
  std::string_view text;
};

// Blocks that begin with a line that is not indented: "public (active)".
std::vector<Zone> zonesOf(std::string_view text) {
  std::vector<Zone> zones;
  for (const std::string_view line : linesOf(text)) {
    if (line.empty()) continue;
    if (line.front() != ' ' && line.front() != '\t') zones.push_back({line.substr(0, line.find(' ')), line});
    if (!zones.empty())
      zones.back().text = {zones.back().text.data(), static_cast<std::size_t>(line.data() + line.size() - zones.back().text.data())};
  }
  return zones;
}

// A source decides before an interface, and who has neither is in the default zone.
const Zone* zoneOf(const std::vector<Zone>& zones, std::string_view defaultZone, const Packet& packet) {
  const auto find = [&](const auto& fits) {
    const auto found = std::find_if(zones.begin(), zones.end(), fits);
    return found == zones.end() ? nullptr : &*found;
  };
  const auto hasSource = [&](const Zone& zone) {
    const Words sources = wordsOf(behind(zone.text, "\n  sources:"));
    return std::any_of(sources.begin(), sources.end(), [&](std::string_view source) {
      return parseNetwork(source).address != 0 && parseNetwork(source).contains(packet.from);
    });
  };
  const auto hasInterface = [&](const Zone& zone) {
    const Words names = wordsOf(behind(zone.text, "\n  interfaces:"));
    return std::find(names.begin(), names.end(), packet.interface) != names.end();
  };
  if (const Zone* zone = find(hasSource)) return zone;
  if (const Zone* zone = find(hasInterface)) return zone;
  return find([&](const Zone& zone) { return zone.name == defaultZone; });
}

std::string_view inQuotesBehind(std::string_view text, std::string_view word) {
  const std::string_view rest = behind(text, word);
  return rest.substr(0, rest.find('"'));
}

// rule family="ipv4" source address="192.168.0.0/24" port port="44331" protocol="udp" accept
bool richRuleAccepts(std::string_view line, const Packet& packet) {
  if (!has(line, "rule ") || !line.ends_with("accept") || has(line, "family=\"ipv6\"") || has(line, " NOT ")) return false;
  const std::string_view source = inQuotesBehind(line, "source address=\"");
  if (!source.empty() && !parseNetwork(source).contains(packet.from)) return false;
  const std::string_view port = inQuotesBehind(line, "port port=\"");
  if (!port.empty()) return isPort(port, packet.port) && has(line, "protocol=\"udp\"");
  const std::string_view protocol = inQuotesBehind(line, "protocol value=\"");
  return protocol == "udp" || (protocol.empty() && !has(line, "service name=") && !has(line, "icmp"));
}

bool zoneAccepts(const Zone& zone, const Packet& packet) {
  if (behind(zone.text, "\n  target:") == "ACCEPT") return true;
  const Words ports = wordsOf(behind(zone.text, "\n  ports:"));
  if (std::any_of(ports.begin(), ports.end(), [&](std::string_view port) { return isPortOfUdp(port, packet.port); })) return true;
  const Words protocols = wordsOf(behind(zone.text, "\n  protocols:"));
  if (std::find(protocols.begin(), protocols.end(), "udp") != protocols.end()) return true;
  const std::vector<std::string_view> lines = linesOf(zone.text);
  return std::any_of(lines.begin(), lines.end(), [&](std::string_view line) { return richRuleAccepts(trimmed(line), packet); });
}

}  // namespace

Judgement judgeByUfw(const std::string& status, const Packet& packet) {
  if (!has(status, "Status: active")) return {Fate::accepted, {}};
  if (packet.interface == "lo") return {Fate::accepted, {}};  // by rules of its own, which it does not list
  for (const std::string_view line : linesOf(status)) {
    for (const std::string_view action : {" ALLOW IN ", " LIMIT IN ", " DENY IN ", " REJECT IN "}) {
      const std::size_t column = line.find(action);
      if (column == std::string::npos || !isToUs(trimmed(line.substr(0, column)), packet)) continue;
      if (!isFromThere(line.substr(column + action.size()), packet)) continue;
      return {action[1] == 'A' || action[1] == 'L' ? Fate::accepted : Fate::dropped, {}};
    }
  }
  return {has(status, "Default: allow (incoming)") ? Fate::accepted : Fate::dropped, {}};
}

Judgement judgeByFirewalld(const std::string& zones, const Packet& packet) {
  if (packet.interface == "lo") return {Fate::accepted, {}};
  const std::size_t end = std::min(zones.find('\n'), zones.size());  // of the first line, the name of the default zone
  const std::vector<Zone> all = zonesOf(std::string_view(zones).substr(end));
  const Zone* zone = zoneOf(all, std::string_view(zones).substr(0, end), packet);
  if (zone == nullptr) return {Fate::unknown, {}};
  return {zoneAccepts(*zone, packet) ? Fate::accepted : Fate::dropped, std::string(zone->name)};
}

}  // namespace fringix::tool::diagnosis
