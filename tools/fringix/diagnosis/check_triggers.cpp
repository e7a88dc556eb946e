// Whether triggers can come to this machine, and do.
#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/checks.h"

namespace fringix::tool::diagnosis {
namespace {

bool isStranger(const PortHolder& holder) { return !holder.passesTriggersOn; }

// While a session of the doctor listens the library has the port, or has joined those that do; before, nobody has it or they do.
const std::vector<PortHolder>* holdersOf(const Facts& facts) {
  for (const Head& head : facts.heads) {
    if (head.session && head.session->status == SLALL_OKAY && head.session->holders) return &*head.session->holders;
  }
  return facts.portHolders ? &*facts.portHolders : nullptr;
}

std::string nameOf(const PortHolder& holder) {
  return holder.process == 0 ? holder.program : fmt::format("{} (process {})", holder.program, holder.process);
}

const char* lineThatTellsHolders(const Facts& facts) {
  return facts.system == System::windows ? "netstat -ano -p udp" : "sudo ss -lunp sport = :44331";
}

Finding taken(const Facts& facts, const std::vector<PortHolder>& holders) {
  const Explanation explanation = explainHolders(holders);
  const auto stranger = std::find_if(holders.begin(), holders.end(), isStranger);
  Finding finding{"trigger port",
                  {},
                  Colour::red,
                  explanation.what,
                  "Programs on this machine wait for triggers in vain.",
                  "End that program: only programs of this library share the port, and only those of the same user or of root.",
                  {}};
  const bool windows = facts.system == System::windows;
  if (stranger->process != 0)
    finding.paste = fmt::format(fmt::runtime(windows ? "taskkill /pid {}" : "kill {}"), stranger->process);
  else
    finding.paste = lineThatTellsHolders(facts);
  return finding;
}

Finding refused(const Facts& facts) {
  const bool windows = facts.system == System::windows;
  return {"trigger port",
          {},
          Colour::red,
          fmt::format("nobody has UDP port 44331, and yet it cannot be bound: {}", facts.bindError),
          "Programs on this machine wait for triggers in vain.",
          windows ? "Look whether the system has reserved the port, and exclude it from that." : "Look at what keeps this user from it.",
          windows ? "netsh interface ipv4 show excludedportrange protocol=udp" : "id"};
}

Finding takenBySomebody(const Facts& facts) {
  return {"trigger port",
          {},
          Colour::yellow,
          fmt::format("UDP 44331 cannot be bound ({}), and the system does not tell who has it", facts.bindError),
          "Programs of this library share it; with any other, programs on this machine wait for triggers in vain.",
          "Look who has it.",
          lineThatTellsHolders(facts)};
}

bool rulesDropTriggers(const Facts& facts) {
  const Findings walls = checkFirewalls(facts);
  return std::any_of(walls.begin(), walls.end(), [](const Finding& wall) { return wall.colour == Colour::red; });
}

std::string triggersText(const Facts& facts, const Session& session) {
  const std::string count = session.triggers == 0 ? "none" : std::to_string(session.triggers);
  if (!facts.waited) return count + " came meanwhile";
  return fmt::format("{} came in {:.1f} s", count, std::chrono::duration<double>(session.listened).count());
}

Finding checkTrigger(const Facts& facts, const Head& head) {
  Finding finding{"triggers", head.address, Colour::green, triggersText(facts, *head.session), "They reach this machine.", {}, {}};
  if (head.session->triggers > 0) return finding;
  finding.meaning = "Perhaps none was raised; --wait 30s listens longer.";
  if (!facts.waited) return finding;
  finding.colour = Colour::yellow;
  finding.meaning =
      "Either the head raised none, or they get lost between it and this machine: they come to UDP 44331 from the head's address.";
  finding.next = "Raise one at the head while this waits. If none comes, look for a firewall or address translation on the way.";
  finding.paste = facts.system == System::windows ? "pktmon start --capture" : "sudo tcpdump -ni any udp port 44331";
  return finding;
}

}  // namespace

Findings checkTriggerPort(const Facts& facts) {
  const std::vector<PortHolder>* holders = holdersOf(facts);
  if (holders != nullptr && std::any_of(holders->begin(), holders->end(), isStranger)) return {taken(facts, *holders)};
  if (!facts.bindError.empty()) return {holders == nullptr ? takenBySomebody(facts) : refused(facts)};
  std::string what = "UDP 44331 can be bound";
  if (facts.portHolders && !facts.portHolders->empty())
    what = fmt::format("{} has UDP 44331 and shares it", nameOf(facts.portHolders->front()));
  return {{"trigger port", {}, Colour::green, what, "Programs of this user can listen for triggers.", {}, {}}};
}

Findings checkTriggers(const Facts& facts) {
  Findings findings;
  const Findings port = checkTriggerPort(facts);
  if (port.front().colour == Colour::red || rulesDropTriggers(facts)) return findings;
  for (const Head& head : facts.heads) {
    if (head.session && head.session->status == SLALL_OKAY) findings.push_back(checkTrigger(facts, head));
  }
  return findings;
}

}  // namespace fringix::tool::diagnosis
