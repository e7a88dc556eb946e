// Whether heads can be reached, and how a session with them begins.
#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/checks.h"
#include "protocol/conversations.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr double lateStep = 1000;        // milliseconds
constexpr double latestGreeting = 2000;  // the library waits no longer
constexpr const char* greeting = "greeting";

std::int32_t statusOf(Reach reach) { return reach == Reach::silent ? SLHANDSHAKE_TIMEOUT : SLCONNECTION_ERROR; }

std::string meaningOf(const Facts& facts, const Head& head, const Interface* place) {
  switch (head.reach.reach) {
    case Reach::refused:
      return "A machine has this address, but no head's program runs there, or a firewall refuses in its name.";
    case Reach::unreachable:
      if (!head.source) return "No network of this machine leads there.";
      if (place != nullptr && place->network.contains(parseIpv4(head.address)))
        return fmt::format("No machine on {} has this address: the head is off, its cable is out, or its address is another.", place->name);
      return "A router on the way knows no machine of this address.";
    case Reach::timedOut:
      if (answersSearch(facts, head.address)) return "It answers the search, so it is on and connected: a firewall drops TCP 44330.";
      return "The head is off, has another address, or a firewall on the way drops TCP 44330.";
    case Reach::silent:
      return "A head greets at once. This one hangs, or it is another device.";
    case Reach::closed:
      return "The head is busy: others have all its sessions.";
    case Reach::noHead:
      return "Something else has this address and port.";
    default:
      return "It is this machine that does not let it be tried.";
  }
}

std::string pasteFor(const Facts& facts, const Head& head) {
  const std::uint32_t address = parseIpv4(head.address);
  if (head.reach.reach != Reach::unreachable || head.source || facts.interfaces.empty()) return {};
  const auto place = std::find_if(facts.interfaces.begin(), facts.interfaces.end(), [](const Interface& each) { return !each.loopback; });
  if (place == facts.interfaces.end()) return {};
  return addAddressLine(facts, *place, (address & 0xFFFFFF00) | ((address & 0xFF) == 1 ? 2 : 1));
}

Finding notReached(const Facts& facts, const Head& head) {
  const Explanation explanation = explain(head.reach, head.address, head.limit);
  Finding finding{"connection",
                  head.address,
                  Colour::red,
                  explanation.what,
                  meaningOf(facts, head, interfaceTo(facts, head)),
                  explanation.next,
                  pasteFor(facts, head),
                  statusOf(head.reach.reach)};
  if (head.reach.reach == Reach::timedOut && answersSearch(facts, head.address))
    finding.next = "Open TCP 44330 in the firewall of the machine that is the head, or of a router between.";
  if (!finding.paste.empty() && head.reach.reach == Reach::unreachable)
    finding.next = "Give this machine an address in the head's network.";
  return finding;
}

std::string stepsText(const Head& head) {
  std::string texts;
  double sum = 0;
  for (const Step& step : head.steps) {
    texts += fmt::format("{}{} {}", texts.empty() ? "" : ", ", step.name, inMilliseconds(step.milliseconds));
    sum += step.milliseconds;
  }
  return fmt::format("{} in all: {}", inMilliseconds(sum), texts);
}

Finding brokenHandshake(const Head& head) {
  return {"handshake",
          head.address,
          Colour::red,
          fmt::format("the session breaks off at the {}: {}", head.brokenAt, head.reason),
          "It begins as a head does and does not go on: it hangs, was started anew just now, or is no head.",
          "Wait a minute and try again; then switch the head off and on.",
          {},
          SLCONNECTION_ERROR};
}

Finding checkHandshake(const Head& head) {
  if (!head.brokenAt.empty()) return brokenHandshake(head);
  Finding finding{"handshake", head.address, Colour::green, stepsText(head), "A session opens as quickly as this.", {}, {}};
  const auto slowest =
      std::max_element(head.steps.begin(), head.steps.end(), [](const Step& a, const Step& b) { return a.milliseconds < b.milliseconds; });
  if (slowest == head.steps.end() || slowest->milliseconds < lateStep || losesSegments(head)) return finding;
  const bool tooLate = slowest->name == greeting && slowest->milliseconds >= latestGreeting;
  finding.colour = tooLate ? Colour::red : Colour::yellow;
  finding.meaning = fmt::format("The head takes {} for its {}; it is busy or starting. From 2 s on the library gives a greeting up.",
                                inMilliseconds(slowest->milliseconds), slowest->name);
  finding.next = "End other programs that use the head, or wait until it has started.";
  finding.status = tooLate ? SLHANDSHAKE_TIMEOUT : SLALL_OKAY;
  return finding;
}

Finding checkVersion(const Head& head) {
  std::string missing;  // "SLSetMask (3200)"
  std::size_t count = 0;
  for (const protocol::Command& command : protocol::CommandTable::ofTheProtocol().commands()) {
    if (command.since <= head.protocolVersion || command.function == "-") continue;
    missing += fmt::format("{}{} ({})", missing.empty() ? "" : ", ", command.function, command.since);
    ++count;
  }
  if (count == 0)
    return {"version",
            head.address,
            Colour::green,
            fmt::format("protocol {}, which has all commands", head.protocolVersion),
            "No function gives SLVERSION_TOO_OLD.",
            {},
            {}};
  return {"version",
          head.address,
          Colour::yellow,
          fmt::format("protocol {}, too old for {} of the functions: {}", head.protocolVersion, count, missing),
          "These functions give SLVERSION_TOO_OLD; all others work.",
          "Do without them, or update the head's system.",
          {},
          SLVERSION_TOO_OLD};
}

Finding checkSession(const Head& head) {
  const Session& session = *head.session;
  if (session.status == SLALL_OKAY)
    return {"library",
            head.address,
            Colour::green,
            fmt::format("opens a session in {}", inMilliseconds(session.openMilliseconds)),
            "A program that fails with this head fails by itself.",
            {},
            {}};
  const Explanation explanation = explain(Error(session.operation.c_str(), session.status), head.address);
  return {"library",
          head.address,
          Colour::red,
          explanation.what,
          "The head talks to the doctor, but the library cannot use it.",
          explanation.next,
          fmt::format("fringix --trace info {}", head.address),
          session.status};
}

}  // namespace

Findings checkConnections(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    const bool noWay = head.reach.reach == Reach::unreachable || head.reach.reach == Reach::timedOut;
    if (noWay && answersOnlyFromOutside(facts, head.address)) continue;  // it is told of as such
    if (head.reach.reach != Reach::head)
      findings.push_back(notReached(facts, head));
    else if (!head.steps.empty())
      findings.push_back({"connection",
                          head.address,
                          Colour::green,
                          fmt::format("TCP 44330 opens in {}", inMilliseconds(head.steps.front().milliseconds)),
                          "Address, cable and firewalls let sessions through.",
                          {},
                          {}});
  }
  return findings;
}

Findings checkHandshakes(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (head.reach.reach == Reach::head) findings.push_back(checkHandshake(head));
  }
  return findings;
}

Findings checkVersions(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (isOpen(head)) findings.push_back(checkVersion(head));
  }
  return findings;
}

Findings checkSessions(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (head.session) findings.push_back(checkSession(head));
  }
  return findings;
}

}  // namespace fringix::tool::diagnosis
