// What the firewall of this machine does with the datagrams of heads, by its rules.
#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/checks.h"
#include "diagnosis/rules.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr std::uint16_t portOfAnswers = 50000;  // any of those that the system chooses from

const char* nameOf(FirewallKind kind) {
  switch (kind) {
    case FirewallKind::ufw:
      return "ufw";
    case FirewallKind::firewalld:
      return "firewalld";
    case FirewallKind::nftables:
      return "nftables";
    case FirewallKind::iptables:
      return "iptables";
    case FirewallKind::windows:
      break;
  }
  return "the Windows firewall";
}

// From where datagrams of heads come, or would come.
struct Place {
  std::string interface;
  Network network;
  std::uint32_t head;
};

std::vector<Place> placesOf(const Facts& facts) {
  std::vector<Place> places;
  for (const Head& head : facts.heads) {
    if (const Interface* way = interfaceTo(facts, head)) {
      const std::uint32_t address = parseIpv4(head.address);
      const bool direct = way->network.contains(address);
      places.push_back({way->name, direct ? way->network : Network{address, 0xFFFFFF00}, address});
    }
  }
  if (!places.empty()) return places;
  for (const Interface& each : facts.interfaces) {
    const std::uint32_t other = each.network.address ^ 1;
    if (!each.loopback && each.linkUp && each.network.mask != 0) places.push_back({each.name, each.network, other});
  }
  return places;
}

std::string letIn(const Firewall& wall, const Place& place, const std::string& where) {
  const std::string network = place.network.text();
  switch (wall.kind) {
    case FirewallKind::ufw:
      return fmt::format("sudo ufw prepend allow proto udp from {}", network);
    case FirewallKind::firewalld:
      return fmt::format(
          "sudo firewall-cmd --permanent --zone={} --add-rich-rule='rule family=\"ipv4\" source address=\"{}\" protocol "
          "value=\"udp\" accept' && sudo firewall-cmd --reload",
          where, network);
    case FirewallKind::nftables:
      return fmt::format("sudo nft insert rule {} ip saddr {} meta l4proto udp accept", where, network);
    case FirewallKind::iptables:
      return fmt::format("sudo {} -I {} -s {} -p udp -j ACCEPT", wall.tool, where, network);
    case FirewallKind::windows:
      break;
  }
  return fmt::format("netsh advfirewall firewall add rule name=\"Fringix heads\" dir=in action=allow protocol=UDP remoteip={}", network);
}

struct Fates {
  Judgement triggers;
  Judgement answers;
};

Fates fatesAt(const Firewall& wall, const Place& place) {
  return {judge(wall, {place.interface, place.head, triggerPort}), judge(wall, {place.interface, place.head, portOfAnswers})};
}

bool nobodyAnswered(const Facts& facts) {
  return std::all_of(facts.interfaces.begin(), facts.interfaces.end(), [](const Interface& place) { return place.answers.empty(); });
}

// Whether they came in spite of the rules: by a helper of the firewall's, or they were misread.
bool triggersCame(const Facts& facts) {
  return std::any_of(facts.heads.begin(), facts.heads.end(), [](const Head& head) { return head.session && head.session->triggers > 0; });
}

Finding dropped(const Facts& facts, const Firewall& wall, const Place& place, const Fates& fates) {
  const bool triggers = fates.triggers.fate == Fate::dropped;
  const bool answers = fates.answers.fate == Fate::dropped && nobodyAnswered(facts);
  const std::string where = triggers ? fates.triggers.place : fates.answers.place;
  const char* const what = triggers && answers ? "answers to searches and triggers, UDP 44331,"
                           : triggers          ? "triggers, UDP 44331,"
                                               : "answers to searches";
  const char* const meaning = triggers && answers ? "Heads are found by their address only, and programs wait for triggers in vain."
                              : triggers          ? "Programs wait for triggers in vain."
                                                  : "Heads are found by their address only.";
  return {"firewall",
          place.interface,
          triggers || facts.heads.empty() ? Colour::red : Colour::yellow,
          fmt::format("{} drops {} from {}{}{}", nameOf(wall.kind), what, place.network.text(), where.empty() ? "" : ", by ", where),
          meaning,
          "Let UDP in from the network of the heads.",
          letIn(wall, place, where)};
}

Findings checkFirewall(const Facts& facts, const Firewall& wall) {
  Findings findings;
  bool unknown = false;
  for (const Place& place : placesOf(facts)) {
    const Fates fates = fatesAt(wall, place);
    const bool triggers = fates.triggers.fate == Fate::dropped && !triggersCame(facts);
    const bool answers = fates.answers.fate == Fate::dropped && nobodyAnswered(facts);
    unknown = unknown || fates.triggers.fate == Fate::unknown;
    const bool told =
        std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) { return finding.subject == place.interface; });
    if ((triggers || answers) && !told) findings.push_back(dropped(facts, wall, place, fates));
  }
  if (!findings.empty()) return findings;
  if (!wall.readable)
    return {{"firewall",
             {},
             Colour::green,
             fmt::format("{} has rules that only root may read", nameOf(wall.kind)),
             "Nothing points to them; where something does not come, ask as root.",
             {},
             {}}};
  if (unknown)
    return {{"firewall",
             {},
             Colour::green,
             fmt::format("{} has rules that the doctor does not understand", nameOf(wall.kind)),
             "Nothing points to them.",
             {},
             {}}};
  return {{"firewall",
           {},
           Colour::green,
           fmt::format("{} lets heads through", nameOf(wall.kind)),
           "No rule drops answers or triggers.",
           {},
           {}}};
}

}  // namespace

Findings checkFirewalls(const Facts& facts) {
  Findings findings;
  for (const Firewall& wall : facts.firewalls) {
    for (Finding& finding : checkFirewall(facts, wall)) findings.push_back(std::move(finding));
  }
  if (findings.empty())
    findings.push_back({"firewall", {}, Colour::green, "none runs on this machine", "No rule drops answers or triggers.", {}, {}});
  return findings;
}

bool aFirewallDropsAnswers(const Facts& facts) {
  const Findings walls = checkFirewalls(facts);
  return std::any_of(walls.begin(), walls.end(), [](const Finding& wall) {
    return wall.colour != Colour::green && wall.what.find("answers to searches") != std::string::npos;
  });
}

}  // namespace fringix::tool::diagnosis
