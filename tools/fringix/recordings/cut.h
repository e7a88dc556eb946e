// A part of a recording, which can be replayed by itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace fringix::tool {

// Where a part begins or ends: at a command, as "fringix recording show" counts them, or at a time since the beginning.
struct CutPlace {
  std::optional<std::size_t> command;
  std::optional<std::uint64_t> time;  // nanoseconds
};

CutPlace toCutPlace(const std::string& text);  // "12", "3.5s", "2min"; throws arguments::UsageError

// With the beginning of each connection that is in it, and with what clients ask for again and again. Throws Failure.
void cutRecording(const std::string& file, const CutPlace& from, const CutPlace& to, const std::string& output);

}  // namespace fringix::tool
