// What a benchmark of a head found out, and its form as JSON, so that sites can be compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "benchmark/timing.h"
#include "console/json.h"

namespace fringix::tool {

struct Measured {
  std::string name;         // for programs: "picture"
  std::string what;         // for people: "picture 1280x1024"
  std::uint64_t bytes = 0;  // of pixels that one call moves; 0: next to nothing
  std::size_t lost = 0;     // triggers that never came
  Timing timing{};
  std::vector<double> sorted{};  // in milliseconds; empty when the findings were read

  // Triggers do not follow each other at once.
  std::optional<double> callsPerSecond() const { return name == "trigger" ? std::nullopt : std::optional(1000 / timing.mean); }
  std::optional<double> megabytesPerSecond() const {  // of 10^6 bytes
    return bytes > 0 ? std::optional(static_cast<double>(bytes) / timing.mean / 1000) : std::nullopt;
  }
};

struct NotMeasured {
  std::string name;
  std::string what;
  std::string reason;
};

struct BenchedHead {
  std::string address;
  std::int32_t serial = 0;
  std::string model;  // empty: the head does not answer searches
  std::int32_t protocolVersion = 0;
  Size camera{};
  Size projector{};
};

struct Findings {
  std::string date;  // "2026-11-22T10:15:00Z"
  BenchedHead head;
  std::int32_t libraryVersion = 0;
  std::string system;    // of the computer: "Linux 6.1.0 x86_64"
  bool complete = true;  // false: ended by Ctrl-C, or by a connection that broke
  std::vector<Measured> measured{};
  std::vector<NotMeasured> notMeasured{};
  std::string changed{};  // what is different on the head now; empty: nothing
};

Json describe(const Findings& findings);

// From the text that describe() gives. Throws std::runtime_error with the reason when it is none.
Findings readFindings(std::string_view text);

}  // namespace fringix::tool
