#include "diagnosis/diagnosis.h"

#include <algorithm>

#include "diagnosis/checks.h"
#include "diagnosis/datagrams.h"
#include "diagnosis/examination.h"
#include "diagnosis/firewall_reading.h"
#include "diagnosis/interfaces.h"
#include "diagnosis/search.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr std::size_t mostHeads = 8;  // without an address; each takes a second

std::vector<std::string> headsToExamine(const Facts& facts) {
  if (!facts.asked.empty()) return {facts.asked};
  const auto isAskedFor = [&](const Answer& answer) { return facts.askedSerial.value_or(answer.serial) == answer.serial; };
  std::vector<std::string> addresses;
  for (const Interface& place : facts.interfaces) {
    for (const Answer& answer : place.answers) {
      const bool known = std::find(addresses.begin(), addresses.end(), answer.address) != addresses.end();
      if (!known && !answersFromOutside(facts, answer.address) && isAskedFor(answer) && addresses.size() < mostHeads)
        addresses.push_back(answer.address);
    }
  }
  return addresses;
}

}  // namespace

Facts gather(const Task& task) {
  Facts facts;
  facts.system = thisSystem;
  facts.asked = task.address;
  facts.askedSerial = task.serial;
  facts.waited = task.listen.count() > 0;
  facts.interfaces = readInterfaces();
  searchAll(facts.interfaces);
  facts.firewalls = readFirewalls();
  facts.portHolders = triggerPortHolders();
  if (!facts.portHolders || facts.portHolders->empty()) facts.bindError = whyNotBound(triggerPort);
  for (const std::string& address : headsToExamine(facts)) {
    facts.heads.push_back(examineHead(address, task.limit));
    if (isOpen(facts.heads.back())) facts.heads.back().session = trySession(address, task.listen);
  }
  return facts;
}

}  // namespace fringix::tool::diagnosis
