#include "console/event_line.h"

#include <fmt/format.h>

#include <fringix/fringix.hpp>

#include "console/json.h"
#include "times/wall_time.h"

namespace fringix::tool {
namespace {

std::string nameOf(std::int32_t event) {
  switch (event) {
    case SLEVENT_MEASUREMENT:
      return "measurement";
    case SLEVENT_TRIGGER:
      return "trigger";
    default:
      return fmt::format("event {}", event);
  }
}

struct State {
  const char* text;
  const char* name;
};

State stateOf(HeadNews::Kind kind) {
  switch (kind) {
    case HeadNews::Kind::missing:
      return {"not there", "missing"};
    case HeadNews::Kind::silent:
      return {"does not answer", "silent"};
    case HeadNews::Kind::answers:
      return {"answers again", "answers"};
    case HeadNews::Kind::lost:
      return {"lost", "lost"};
    case HeadNews::Kind::back:
      break;
  }
  return {"back", "back"};
}

std::string formatTime(WallTime time) { return localText(time, "%Y-%m-%d %H:%M:%S") + millisecondText(time); }

std::string formatUniversalTime(WallTime time) { return universalText(time, "%Y-%m-%dT%H:%M:%S") + millisecondText(time) + "Z"; }

}  // namespace

std::string formatEvent(const HeadEvent& event) {
  return fmt::format("{}  {:<15}  head {}  {}", formatTime(event.time), event.address, event.serial, nameOf(event.number));
}

std::string formatEventAsJson(const HeadEvent& event) {
  return Json::object({{"time", formatUniversalTime(event.time)},
                       {"address", event.address},
                       {"serial", event.serial},
                       {"event", nameOf(event.number)}})
      .line();
}

std::string formatNews(const HeadNews& news) {
  const std::string rest = news.text.empty() ? "" : ": " + news.text;
  return fmt::format("{}  {:<15}  {}{}", formatTime(news.time), news.address, stateOf(news.kind).text, rest);
}

std::string formatNewsAsJson(const HeadNews& news) {
  Json json = Json::object({{"time", formatUniversalTime(news.time)}, {"address", news.address}, {"state", stateOf(news.kind).name}});
  if (!news.text.empty()) json.add("text", news.text);
  return json.line();
}

}  // namespace fringix::tool
