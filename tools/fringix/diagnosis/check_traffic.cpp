// How quick the way to a head is, and what gets lost on it.
#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/checks.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr double slowRoundTrip = 10;  // milliseconds; a local network takes a tenth of one
constexpr double verySlowRoundTrip = 100;
constexpr double stutter = 100;          // milliseconds
constexpr std::size_t toldStutters = 5;  // fewer may be this machine's own
constexpr double lossesTold = 0.001;     // of the segments that were sent
constexpr double lossesTooMany = 0.02;
constexpr std::uint64_t fewestLosses = 3;
constexpr std::size_t fewestDisturbed = 2;  // pictures
constexpr double usualLink = 1000;          // Mbit/s of a head
constexpr double assumedLink = 100;         // where nobody tells

struct Trips {
  double median;
  double worst;
  std::size_t stutters;
};

Trips summarise(std::vector<double> trips) {
  std::sort(trips.begin(), trips.end());
  const auto slow = std::count_if(trips.begin(), trips.end(), [](double trip) { return trip > stutter; });
  return {trips[trips.size() / 2], trips.back(), static_cast<std::size_t>(slow)};
}

Finding checkRoundTrip(const Head& head) {
  const Trips trips = summarise(head.roundTrips);
  Finding finding{
      "round trip",
      head.address,
      Colour::green,
      fmt::format("{} median, {} worst of {}", inMilliseconds(trips.median), inMilliseconds(trips.worst), head.roundTrips.size()),
      "Each command costs at least this.",
      {},
      {}};
  if (losesSegments(head)) return finding;  // what is lost takes its time, and is told of as such
  if (trips.median > slowRoundTrip) {
    finding.colour = trips.median > verySlowRoundTrip ? Colour::red : Colour::yellow;
    finding.meaning = "A local network takes below 1 ms. The way leads through a radio link, a VPN or a router, or the head is busy.";
    finding.next = "Connect the head by cable to a card of this machine.";
  } else if (trips.stutters >= toldStutters) {
    finding.colour = Colour::yellow;
    finding.meaning =
        fmt::format("{} of them took more than 100 ms, though nothing was lost: the head or this machine pauses.", trips.stutters);
    finding.next = "Look whether this machine is overloaded, or saves energy at its network card.";
  }
  return finding;
}

// What the link lets expect: a head has no more than the usual one.
double expectedMegabits(const Interface* place) {
  if (!place->hasCable || place->megabits <= 0) return assumedLink;
  return std::min(usualLink, static_cast<double>(place->megabits));
}

std::string linkText(const Interface* place) {
  if (!place->hasCable || place->megabits <= 0) return "whose speed the system does not tell";
  return fmt::format("of {} Mbit/s", place->megabits);
}

Finding noPicture(const Head& head) {
  return {"picture",
          head.address,
          Colour::yellow,
          "the head has no live picture to give",
          "The camera does not run, or another program measures just now.",
          "Wait a moment and try again; then switch the head off and on.",
          {},
          SLSYSTEM_ERROR};
}

// Small packets pass and whole ones do not.
Finding brokenPicture(const Facts& facts, const Head& head) {
  Finding finding{"picture",
                  head.address,
                  Colour::red,
                  fmt::format("the live picture broke off: {}", head.pictures.broken),
                  "Commands pass and pictures do not: the head hangs, or packets of full size are dropped on the way.",
                  "Fetch one by itself, to see whether that comes again.",
                  fmt::format("fringix --trace live {} -o live.png", head.address),
                  SLCONNECTION_ERROR};
  const Interface* place = interfaceTo(facts, head);
  if (place == nullptr || place->loopback || place->mtu <= 1500) return finding;
  finding.meaning =
      fmt::format("Commands pass and pictures do not, with an MTU of {}: a switch on the way takes none above 1500.", place->mtu);
  finding.next = "Use packets of the usual size.";
  finding.paste = facts.system == System::windows ? fmt::format("netsh interface ipv4 set subinterface \"{}\" mtu=1500", place->name)
                                                  : fmt::format("sudo ip link set dev {} mtu 1500", place->name);
  return finding;
}

Finding checkThroughput(const Facts& facts, const Head& head) {
  const Interface* place = interfaceTo(facts, head);
  const Pictures& pictures = head.pictures;
  Finding finding{"picture",
                  head.address,
                  Colour::green,
                  fmt::format("{} bytes in {}", pictures.bytes, inMilliseconds(pictures.milliseconds)),
                  "The way carries pictures as it should.",
                  {},
                  {}};
  if (pictures.megabits.empty() || place == nullptr || place->loopback) return finding;
  const double reached = *std::max_element(pictures.megabits.begin(), pictures.megabits.end());
  const double expected = expectedMegabits(place);
  finding.what += fmt::format(", {:.0f} Mbit/s over a link {}", reached, linkText(place));
  if (losesSegments(head) || reached >= expected / 2) return finding;
  finding.colour = reached < expected / 10 ? Colour::red : Colour::yellow;
  finding.meaning =
      fmt::format("It should be {:.0f} Mbit/s at least. A switch, a cable or another link on the way is slower, or shared.", expected / 2);
  finding.next = "Connect the head directly to this machine and compare; look at what each end has agreed on.";
  if (facts.system == System::linux) finding.paste = fmt::format("sudo ethtool {}", place->name);
  return finding;
}

Finding checkLoss(const Head& head) {
  const Traffic& traffic = *head.traffic;
  Finding finding{"losses",
                  head.address,
                  Colour::green,
                  fmt::format("{} of {} segments sent again; {} of {} pictures came with gaps", traffic.repeated, traffic.sent,
                              head.pictures.disturbed, head.pictures.count),
                  "The way loses nothing to speak of.",
                  {},
                  {}};
  if (!losesSegments(head)) return finding;
  const bool tooMany = share(traffic) >= lossesTooMany || 2 * head.pictures.disturbed > head.pictures.count;
  finding.colour = tooMany ? Colour::red : Colour::yellow;
  finding.meaning = "Packets get lost on the way, and each costs a pause of up to 0.2 s and more.";
  finding.next = "Change the cable, then the port of the switch; look at the errors that the card counts.";
  return finding;
}

}  // namespace

double share(const Traffic& traffic) {
  return static_cast<double>(traffic.repeated) / static_cast<double>(std::max<std::uint64_t>(traffic.sent, 1));
}

bool losesSegments(const Head& head) {
  if (!head.traffic) return false;
  const bool sending = head.traffic->repeated >= fewestLosses && share(*head.traffic) >= lossesTold;
  return sending || head.pictures.disturbed >= fewestDisturbed;
}

Findings checkRoundTrips(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (!head.roundTrips.empty()) findings.push_back(checkRoundTrip(head));
  }
  return findings;
}

Findings checkPictures(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (head.pictures.none)
      findings.push_back(noPicture(head));
    else if (!head.pictures.broken.empty())
      findings.push_back(brokenPicture(facts, head));
    else if (head.pictures.count > 0)
      findings.push_back(checkThroughput(facts, head));
  }
  return findings;
}

Findings checkLosses(const Facts& facts) {
  Findings findings;
  for (const Head& head : facts.heads) {
    if (!head.traffic || !isOpen(head)) continue;
    Finding finding = checkLoss(head);
    const Interface* place = interfaceTo(facts, head);
    if (finding.colour != Colour::green && place != nullptr)
      finding.paste =
          facts.system == System::windows ? "netsh interface ipv4 show ipstats" : fmt::format("ip -s link show {}", place->name);
    findings.push_back(std::move(finding));
  }
  return findings;
}

}  // namespace fringix::tool::diagnosis
