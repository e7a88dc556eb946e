// Events of heads as lines, for people and for programs.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace fringix::tool {

struct HeadEvent {
  std::chrono::system_clock::time_point time;
  std::string address;
  std::int32_t number = 0;  // as fringix.h counts events
  std::int64_t serial = 0;
};

// "2026-11-21 12:30:15.123  127.0.0.2  head 1001  trigger", in local time.
std::string formatEvent(const HeadEvent& event);

// {"time":"2026-11-21T11:30:15.123Z","address":"127.0.0.2","serial":1001,"event":"trigger"}
std::string formatEventAsJson(const HeadEvent& event);

}  // namespace fringix::tool
