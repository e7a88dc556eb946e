// Findings from facts: pure functions, one for each thing that can be wrong.
#pragma once

#include "diagnosis/facts.h"
#include "diagnosis/finding.h"

namespace fringix::tool::diagnosis {

Findings checkInterfaces(const Facts& facts);
Findings checkNetworks(const Facts& facts);  // heads that answer out of another network, cards that share one
Findings checkSearch(const Facts& facts);
Findings checkConnections(const Facts& facts);
Findings checkHandshakes(const Facts& facts);
Findings checkVersions(const Facts& facts);
Findings checkSessions(const Facts& facts);
Findings checkRoundTrips(const Facts& facts);
Findings checkPictures(const Facts& facts);
Findings checkLosses(const Facts& facts);
Findings checkTriggerPort(const Facts& facts);
Findings checkTriggers(const Facts& facts);
Findings checkFirewalls(const Facts& facts);

Findings checkAll(const Facts& facts);  // in the order in which somebody would look

// What several of them ask.
const Interface* interfaceTo(const Facts& facts, const Head& head);  // null: there is no way, or it cannot be told
const Interface* interfaceInNetworkOf(const Facts& facts, std::uint32_t address);
bool answersFromOutside(const Facts& facts, const std::string& head);  // of each network of this machine
bool answersOnlyFromOutside(const Facts& facts, const std::string& head);
bool answersSearch(const Facts& facts, const std::string& head);
bool isOpen(const Head& head);                   // up to the end of the handshake
double share(const Traffic& traffic);            // of segments that had to be sent again, 0 to 1
bool losesSegments(const Head& head);            // enough to be told
bool aFirewallDropsAnswers(const Facts& facts);  // of this machine, by its rules
std::string addAddressLine(const Facts& facts, const Interface& place, std::uint32_t address);
std::string inMilliseconds(double milliseconds);  // "0.31 ms"

}  // namespace fringix::tool::diagnosis
