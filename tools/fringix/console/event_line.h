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

// What becomes of a head that is watched.
struct HeadNews {
  enum class Kind { missing, silent, answers, lost, back };

  std::chrono::system_clock::time_point time;
  std::string address;
  Kind kind = Kind::lost;
  std::string text;  // what is known of it; may be empty
};

// "2026-11-21 12:30:15.123  127.0.0.2  head 1001  trigger", in local time.
std::string formatEvent(const HeadEvent& event);

// {"time":"2026-11-21T11:30:15.123Z","address":"127.0.0.2","serial":1001,"event":"trigger"}
std::string formatEventAsJson(const HeadEvent& event);

// "2026-11-21 12:30:15.123  127.0.0.2        lost: it refuses connections, so its program does not run"
std::string formatNews(const HeadNews& news);

// {"time":"2026-11-21T11:30:15.123Z","address":"127.0.0.2","state":"lost","text":"it refuses connections, so its program does not run"}
std::string formatNewsAsJson(const HeadNews& news);

}  // namespace fringix::tool
