#include "console/event_line.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <fringix/fringix.hpp>

#include "console/json.h"

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

std::time_t wholeSeconds(const HeadEvent& event) {
  return std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(event.time));
}

std::int64_t milliseconds(const HeadEvent& event) {
  return (event.time - std::chrono::floor<std::chrono::seconds>(event.time)) / std::chrono::milliseconds(1);
}

}  // namespace

std::string formatEvent(const HeadEvent& event) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S}.{:03}  {:<15}  head {}  {}", fmt::localtime(wholeSeconds(event)), milliseconds(event),
                     event.address, event.serial, nameOf(event.number));
}

std::string formatEventAsJson(const HeadEvent& event) {
  return Json::object({{"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(wholeSeconds(event)), milliseconds(event))},
                       {"address", event.address},
                       {"serial", event.serial},
                       {"event", nameOf(event.number)}})
      .line();
}

}  // namespace fringix::tool
