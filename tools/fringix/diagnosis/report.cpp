#include "diagnosis/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "console/statuses.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr std::size_t width = 80;
constexpr std::size_t indent = 10;

const char* onTerminal(Colour colour) { return colour == Colour::red ? "\x1b[1;31m" : colour == Colour::yellow ? "\x1b[33m" : "\x1b[32m"; }

const char* label(Colour colour) { return colour == Colour::red ? "RED" : inWords(colour); }

// Behind `begin`, which is as wide as the indent of the further lines.
std::string wrapped(std::string_view text, const std::string& begin) {
  std::string lines;
  std::string line;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(' '), text.size());
    if (!line.empty() && indent + line.size() + 1 + length > width) {
      lines += line + "\n" + std::string(indent, ' ');
      line.clear();
    }
    line += (line.empty() ? "" : " ") + std::string(text.substr(0, length));
    text.remove_prefix(std::min(text.size(), length + 1));
  }
  return begin + lines + line + "\n";
}

std::string wrapped(std::string_view text) { return wrapped(text, std::string(indent, ' ')); }

// What docs/statuses.md begins with.
std::string statusText(std::int32_t status) {
  const std::optional<StatusText> found = findStatus(std::to_string(status));
  std::string text = found->text.substr(0, found->text.find("\n\n"));
  std::replace(text.begin(), text.end(), '\n', ' ');
  text = text.substr(0, text.find_first_of(".;"));
  return fmt::format("Programs get {} {}: {}.", found->code, found->name, text);
}

std::string formatTrouble(const Finding& finding) {
  std::string text = wrapped(finding.meaning);
  if (finding.status != 0) text += wrapped(statusText(finding.status));
  if (!finding.next.empty()) text += wrapped("Next: " + finding.next);
  if (!finding.paste.empty()) text += fmt::format("{:{}}{}\n", "", indent + 2, finding.paste);
  return text;
}

std::string format(const Finding& finding, const std::string& title, bool coloured) {
  const std::string plain = fmt::format("{:<{}}", label(finding.colour), indent - 2);
  const std::string begin = "  " + (coloured ? onTerminal(finding.colour) + plain + "\x1b[0m" : plain);
  const std::string text = wrapped(title + ": " + finding.what, begin);
  return finding.colour == Colour::green ? text : text + formatTrouble(finding);
}

bool isOfHead(const Finding& finding) { return parseIpv4(finding.subject) != 0; }

std::vector<std::string> headsIn(const Findings& findings) {
  std::vector<std::string> heads;
  for (const Finding& finding : findings) {
    if (isOfHead(finding) && std::find(heads.begin(), heads.end(), finding.subject) == heads.end()) heads.push_back(finding.subject);
  }
  return heads;
}

Json toJson(const Finding& finding) {
  Json json = Json::object({{"area", finding.area},
                            {"subject", finding.subject},
                            {"colour", inWords(finding.colour)},
                            {"what", finding.what},
                            {"meaning", finding.meaning},
                            {"next", finding.next},
                            {"paste", finding.paste}});
  if (finding.status != 0) json.add("status", finding.status);
  return json;
}

template <class Element>
Json listOf(const std::vector<Element>& elements, Json (*convert)(const Element&)) {
  std::vector<Json> all;
  for (const Element& element : elements) all.push_back(convert(element));
  return Json::array(std::move(all));
}

Json toJson(const Answer& answer) {
  return Json::object({{"address", answer.address}, {"serial", answer.serial}, {"toSearch", answer.toSearch}});
}

Json toJson(const Interface& place) {
  return Json::object({{"name", place.name},
                       {"address", formatIpv4(place.network.address)},
                       {"mask", formatIpv4(place.network.mask)},
                       {"broadcast", formatIpv4(place.network.broadcast())},
                       {"link", place.linkUp},
                       {"megabits", place.megabits == 0 || !place.hasCable ? Json(nullptr) : Json(place.megabits)},
                       {"mtu", place.mtu == 0 ? Json(nullptr) : Json(place.mtu)},
                       {"answers", listOf<Answer>(place.answers, toJson)}});
}

Json toJson(const Step& step) { return Json::object({{"name", step.name}, {"milliseconds", step.milliseconds}}); }

Json roundTripsOf(std::vector<double> trips) {
  if (trips.empty()) return nullptr;
  std::sort(trips.begin(), trips.end());
  return Json::object({{"count", trips.size()}, {"medianMilliseconds", trips[trips.size() / 2]}, {"worstMilliseconds", trips.back()}});
}

Json toJson(const Pictures& pictures) {
  if (pictures.count == 0) return nullptr;
  const auto best = std::max_element(pictures.megabits.begin(), pictures.megabits.end());
  return Json::object({{"bytes", pictures.bytes},
                       {"count", pictures.count},
                       {"milliseconds", pictures.milliseconds},
                       {"megabits", best == pictures.megabits.end() ? Json(nullptr) : Json(*best)},
                       {"withGaps", pictures.disturbed}});
}

Json toJson(const std::optional<Traffic>& traffic) {
  if (!traffic) return nullptr;
  return Json::object(
      {{"sent", traffic->sent}, {"received", traffic->received}, {"repeated", traffic->repeated}, {"behindGaps", traffic->overtaken}});
}

Json toJson(const std::optional<Session>& session) {
  if (!session) return nullptr;
  return Json::object({{"status", session->status},
                       {"openMilliseconds", session->openMilliseconds},
                       {"triggers", session->triggers},
                       {"listenedMilliseconds", session->listened.count()}});
}

// "head", or why not: the kinds of explain(), and "broken" when the beginning of a session broke off.
std::string reachOf(const Head& head) {
  if (head.reach.reach != Reach::head) return explain(head.reach, head.address, head.limit).kind;
  return head.brokenAt.empty() ? "head" : "broken";
}

Json toJson(const Head& head) {
  const bool open = reachOf(head) == "head";
  return Json::object({{"address", head.address},
                       {"reach", reachOf(head)},
                       {"serial", open ? Json(head.serial) : Json(nullptr)},
                       {"protocolVersion", open ? Json(head.protocolVersion) : Json(nullptr)},
                       {"steps", listOf<Step>(head.steps, toJson)},
                       {"roundTrip", roundTripsOf(head.roundTrips)},
                       {"picture", toJson(head.pictures)},
                       {"segments", toJson(head.traffic)},
                       {"session", toJson(head.session)}});
}

// The worst of an area and subject: what changes from round to round are numbers.
Colour colourOf(const Findings& findings, const Finding& wanted) {
  Colour colour = Colour::green;
  for (const Finding& each : findings) {
    if (each.area == wanted.area && each.subject == wanted.subject) colour = std::max(colour, each.colour);
  }
  return colour;
}

}  // namespace

const char* inWords(Colour colour) { return colour == Colour::red ? "red" : colour == Colour::yellow ? "yellow" : "green"; }

Colour worstOf(const Findings& findings) {
  Colour worst = Colour::green;
  for (const Finding& finding : findings) worst = std::max(worst, finding.colour);
  return worst;
}

std::size_t count(const Findings& findings, Colour colour) {
  return static_cast<std::size_t>(
      std::count_if(findings.begin(), findings.end(), [=](const Finding& finding) { return finding.colour == colour; }));
}

std::string titleOf(const Finding& finding) { return finding.area + (finding.subject.empty() ? "" : " ") + finding.subject; }

std::string format(const Findings& findings, bool coloured) {
  std::string text = "this machine\n";
  for (const Finding& finding : findings) {
    if (!isOfHead(finding)) text += format(finding, titleOf(finding), coloured);
  }
  for (const std::string& head : headsIn(findings)) {
    text += fmt::format("\nhead {}\n", head);
    for (const Finding& finding : findings) {
      if (isOfHead(finding) && finding.subject == head) text += format(finding, finding.area, coloured);
    }
  }
  return text + fmt::format("\n{} red, {} yellow, {} green\n", count(findings, Colour::red), count(findings, Colour::yellow),
                            count(findings, Colour::green));
}

Json toJson(const Facts& facts, const Findings& findings) {
  return Json::object({{"worst", inWords(worstOf(findings))},
                       {"findings", listOf<Finding>(findings, toJson)},
                       {"interfaces", listOf<Interface>(facts.interfaces, toJson)},
                       {"heads", listOf<Head>(facts.heads, toJson)}});
}

std::string formatChanges(const Findings& before, const Findings& now) {
  std::string text;
  for (const Finding& finding : now) {
    const Colour old = colourOf(before, finding);
    if (old == colourOf(now, finding) || finding.colour == Colour::green) continue;
    text += fmt::format("{} -> {}  {}: {}\n", label(old), label(finding.colour), titleOf(finding), finding.what) + formatTrouble(finding);
  }
  for (const Finding& finding : before) {
    if (finding.colour == Colour::green || colourOf(now, finding) != Colour::green) continue;
    text += fmt::format("{} -> green  {}\n", label(finding.colour), titleOf(finding));
  }
  return text;
}

}  // namespace fringix::tool::diagnosis
