#include "diagnosis/checks.h"

#include <fmt/format.h>

#include <algorithm>

namespace fringix::tool::diagnosis {

Findings checkAll(const Facts& facts) {
  Findings all;
  for (const auto check : {checkInterfaces, checkNetworks, checkSearch, checkFirewalls, checkTriggerPort, checkConnections, checkHandshakes,
                           checkVersions, checkRoundTrips, checkPictures, checkLosses, checkSessions, checkTriggers}) {
    for (Finding& finding : check(facts)) all.push_back(std::move(finding));
  }
  return all;
}

const Interface* interfaceTo(const Facts& facts, const Head& head) {
  if (!head.source) return nullptr;
  const auto found = std::find_if(facts.interfaces.begin(), facts.interfaces.end(),
                                  [&](const Interface& place) { return place.network.address == *head.source; });
  if (found != facts.interfaces.end()) return &*found;
  return interfaceInNetworkOf(facts, *head.source);  // of the loopback every address is this machine's
}

const Interface* interfaceInNetworkOf(const Facts& facts, std::uint32_t address) {
  const auto found = std::find_if(facts.interfaces.begin(), facts.interfaces.end(),
                                  [&](const Interface& place) { return place.network.mask != 0 && place.network.contains(address); });
  return found == facts.interfaces.end() ? nullptr : &*found;
}

bool answersFromOutside(const Facts& facts, const std::string& head) { return interfaceInNetworkOf(facts, parseIpv4(head)) == nullptr; }

bool answersSearch(const Facts& facts, const std::string& head) {
  return std::any_of(facts.interfaces.begin(), facts.interfaces.end(), [&](const Interface& place) {
    return std::any_of(place.answers.begin(), place.answers.end(), [&](const Answer& answer) { return answer.address == head; });
  });
}

bool answersOnlyFromOutside(const Facts& facts, const std::string& head) {
  return answersSearch(facts, head) && answersFromOutside(facts, head);
}

bool isOpen(const Head& head) { return head.reach.reach == Reach::head && head.brokenAt.empty(); }

std::string addAddressLine(const Facts& facts, const Interface& place, std::uint32_t address) {
  if (facts.system == System::windows)
    return fmt::format("netsh interface ipv4 add address \"{}\" {} 255.255.255.0", place.name, formatIpv4(address));
  return fmt::format("sudo ip address add {}/24 dev {}", formatIpv4(address), place.name);
}

std::string inMilliseconds(double milliseconds) { return fmt::format("{:.{}f} ms", milliseconds, milliseconds < 10 ? 2 : 0); }

}  // namespace fringix::tool::diagnosis
