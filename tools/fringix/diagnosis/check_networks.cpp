// The interfaces of this machine, their networks, and who answers in them.
#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/checks.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr std::int64_t slowLink = 100;  // Mbit/s; heads have links of 1 Gbit/s
constexpr std::uint32_t linkLocal = 0xA9FE0000;

std::string speedText(std::int64_t megabits) {
  return megabits % 1000 == 0 ? fmt::format("{} Gbit/s", megabits / 1000) : fmt::format("{} Mbit/s", megabits);
}

std::string answering(const Interface& place) {
  if (place.answers.empty()) return "no head answers";
  std::string text = place.answers.size() == 1 ? "1 head answers: " : fmt::format("{} heads answer: ", place.answers.size());
  for (const Answer& answer : place.answers)
    text += fmt::format("{}{} at {}", &answer == &place.answers.front() ? "" : ", ", answer.serial, answer.address);
  return text;
}

std::string describe(const Interface& place) {
  std::string text = fmt::format("{}/{}", formatIpv4(place.network.address), place.network.prefix());
  if (place.network.mask != 0) text += fmt::format(", asks {}", formatIpv4(place.network.broadcast()));
  if (place.megabits > 0 && place.hasCable) text += ", " + speedText(place.megabits);
  if (place.mtu > 0) text += fmt::format(", MTU {}", place.mtu);
  return text + "; " + answering(place);
}

std::string lookAtLink(const Facts& facts, const Interface& place) {
  return facts.system == System::windows ? "netsh interface ipv4 show interfaces" : fmt::format("sudo ethtool {}", place.name);
}

Finding checkInterface(const Facts& facts, const Interface& place) {
  Finding finding{"interface", place.name, Colour::green, describe(place), "The search asks this network.", {}, {}};
  const auto worsen = [&](const std::string& what, std::string meaning, std::string next, std::string paste) {
    finding.colour = Colour::yellow;
    finding.what += "; " + what;
    finding.meaning = std::move(meaning);
    finding.next = std::move(next);
    finding.paste = std::move(paste);
  };
  const bool wired = place.hasCable && !place.loopback;
  if (wired && !place.linkUp) {
    worsen("no link", "Nothing is connected to it, or the other end is off.", "Check the cable and the switch.", lookAtLink(facts, place));
  } else if (wired && place.halfDuplex) {
    worsen("half duplex", "The two ends of the cable did not agree; packets get lost under load.",
           "Set both ends to negotiate speed and duplex by themselves.", lookAtLink(facts, place));
  } else if (wired && place.megabits > 0 && place.megabits <= slowLink) {
    worsen("a slow link",
           fmt::format("A picture of 1280 x 1024 takes {:.0f} ms at least; 10.5 ms at 1 Gbit/s.",
                       10500. / static_cast<double>(place.megabits)),
           "Use a cable with all eight wires and a switch for 1 Gbit/s.", lookAtLink(facts, place));
  } else if ((place.network.address & 0xFFFF0000) == linkLocal && place.answers.empty()) {
    worsen("an address of its own making", "It asked for an address and nobody gave it one, so no head shares its network.",
           "Give it an address in the network of the heads.", {});
  }
  return finding;
}

// In the head's network of 256, with the end of this machine's own address when that is free.
std::uint32_t addressBeside(const Interface& place, std::uint32_t head) {
  std::uint32_t end = place.network.address & 0xFF;
  if (end == (head & 0xFF) || end == 0 || end == 255) end = (head & 0xFF) == 1 ? 2 : 1;
  return (head & 0xFFFFFF00) | end;
}

Finding wrongSubnet(const Facts& facts, const Interface& place, const Answer& answer) {
  const std::uint32_t own = addressBeside(place, parseIpv4(answer.address));
  Finding finding{
      "subnet",
      answer.address,
      Colour::red,
      fmt::format("head {} answers on {} from {}, outside {}", answer.serial, place.name, answer.address, place.network.text()),
      "It is on the same wire, but in another network: nothing opens it and the usual search does not reach it.",
      fmt::format("Give {} the address {}/24 as well, or the head one in {}.", place.name, formatIpv4(own), place.network.text()),
      addAddressLine(facts, place, own)};
  const bool opens =
      std::any_of(facts.heads.begin(), facts.heads.end(), [&](const Head& head) { return head.address == answer.address && isOpen(head); });
  if (!opens) return finding;
  finding.colour = Colour::yellow;
  finding.meaning = "It opens through a router although it is on the same wire; the usual search does not reach it.";
  return finding;
}

// It hears what goes to all networks, but not what goes to its own.
Finding otherMask(const Interface& place, const Answer& answer) {
  return {"mask",
          answer.address,
          Colour::yellow,
          fmt::format("head {} answers what is sent to everybody, but not what is sent to {}", answer.serial,
                      formatIpv4(place.network.broadcast())),
          "Computer and head do not agree on where their network ends, so the usual search does not find it.",
          fmt::format("Give the head the mask of {}, {}.", place.name, formatIpv4(place.network.mask)),
          {}};
}

bool losesSegmentsTo(const Facts& facts, const std::string& address) {
  return std::any_of(facts.heads.begin(), facts.heads.end(),
                     [&](const Head& head) { return head.address == address && losesSegments(head); });
}

Findings sharedNetworks(const Facts& facts) {
  Findings findings;
  for (auto one = facts.interfaces.begin(); one != facts.interfaces.end(); ++one) {
    for (auto other = one + 1; other != facts.interfaces.end(); ++other) {
      if (one->loopback || other->loopback || one->name == other->name || !one->linkUp || !other->linkUp) continue;
      if (!one->network.contains(other->network.address) && !other->network.contains(one->network.address)) continue;
      findings.push_back({"interface",
                          other->name,
                          Colour::yellow,
                          fmt::format("{} and {} are both in {}", one->name, other->name, one->network.text()),
                          "The system sends everything to that network by one of them, perhaps not by the one with the head.",
                          "Give each card a network of its own, 192.168.0.x and 192.168.1.x for instance.",
                          {}});
    }
  }
  return findings;
}

// A head that is reached over two networks is one.
std::vector<const Answer*> differentHeads(const Facts& facts) {
  std::vector<const Answer*> heads;
  for (const Interface& place : facts.interfaces) {
    for (const Answer& answer : place.answers) {
      const bool known = std::any_of(heads.begin(), heads.end(),
                                     [&](const Answer* head) { return head->address == answer.address && head->serial == answer.serial; });
      if (!known) heads.push_back(&answer);
    }
  }
  return heads;
}

Finding noSuchSerial(const Facts& facts) {
  return {"search",
          {},
          Colour::red,
          fmt::format("other heads answer, but none with serial number {}", *facts.askedSerial),
          "That head is off, not connected or in another network, or it was exchanged.",
          "Check the number on the head; if you know its address, ask for that: fringix doctor ADDRESS",
          {}};
}

Finding nobodyAnswers(const Facts& facts) {
  const bool onlyLoopback =
      std::all_of(facts.interfaces.begin(), facts.interfaces.end(), [](const Interface& place) { return place.loopback; });
  if (onlyLoopback)
    return {"search",
            {},
            Colour::red,
            "no head answers: this machine has no network but itself",
            "No cable, no driver or no address.",
            "Connect the network of the heads, and give the interface an address in it.",
            {}};
  const bool hidden = std::any_of(facts.firewalls.begin(), facts.firewalls.end(), [](const Firewall& wall) { return !wall.readable; });
  if (hidden)
    return {"search",
            {},
            Colour::red,
            "no head answers in any network, and the firewall's rules can be read by root only",
            "The heads are off or elsewhere, or this machine's firewall drops their answers.",
            "Let root look at the rules.",
            "sudo fringix doctor"};
  return {"search",
          {},
          Colour::red,
          "no head answers in any network",
          "The heads are off, not connected or in another network, or something on the way drops their answers.",
          "Check power and cable of the head; if you know its address, ask for that: fringix doctor ADDRESS",
          {}};
}

Finding doesNotAnswer(const Head& head) {
  return {
      "search",
      head.address,
      Colour::yellow,
      "the head opens at its address, but does not answer the search",
      "\"fringix list\" and serial numbers do not find it. A firewall or a switch drops broadcasts to UDP 44332 or the answers to them.",
      "Let UDP 44332 pass to the head, and UDP from it back; until then give its address.",
      {}};
}

bool isAnswerMissed(const Facts& facts, const Head& head) {
  return isOpen(head) && !answersSearch(facts, head.address) && interfaceInNetworkOf(facts, parseIpv4(head.address)) != nullptr &&
         !losesSegments(head) && !aFirewallDropsAnswers(facts);
}

}  // namespace

Findings checkInterfaces(const Facts& facts) {
  Findings findings;
  for (const Interface& place : facts.interfaces) findings.push_back(checkInterface(facts, place));
  return findings;
}

Findings checkNetworks(const Facts& facts) {
  Findings findings = sharedNetworks(facts);
  std::vector<std::string> told;
  for (const Interface& place : facts.interfaces) {
    for (const Answer& answer : place.answers) {
      const bool outside = answersFromOutside(facts, answer.address);
      const bool unheard = !answer.toSearch && place.network.contains(parseIpv4(answer.address)) && !losesSegmentsTo(facts, answer.address);
      if ((!outside && !unheard) || std::find(told.begin(), told.end(), answer.address) != told.end()) continue;
      told.push_back(answer.address);
      findings.push_back(outside ? wrongSubnet(facts, place, answer) : otherMask(place, answer));
    }
  }
  return findings;
}

Findings checkSearch(const Facts& facts) {
  const std::vector<const Answer*> heads = differentHeads(facts);
  if (heads.empty() && facts.asked.empty()) {
    if (aFirewallDropsAnswers(facts)) return {};
    return {nobodyAnswers(facts)};
  }
  const bool found =
      !facts.askedSerial || std::any_of(heads.begin(), heads.end(), [&](const Answer* head) { return head->serial == *facts.askedSerial; });
  if (!found) return {noSuchSerial(facts)};
  Findings findings;
  if (!heads.empty())
    findings.push_back({"search",
                        {},
                        Colour::green,
                        heads.size() == 1 ? "1 head answers" : fmt::format("{} heads answer", heads.size()),
                        "\"fringix list\" and serial numbers find it.",
                        {},
                        {}});
  for (const Head& head : facts.heads) {
    if (isAnswerMissed(facts, head)) findings.push_back(doesNotAnswer(head));
  }
  return findings;
}

}  // namespace fringix::tool::diagnosis
