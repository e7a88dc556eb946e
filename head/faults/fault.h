// A fault on purpose: when a head does something wrong, and what. docs/simulated-head.md has the texts for it.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace fringix::head {

enum class FaultAction {
  stall,
  reset,
  cut,
  drip,
  slowLink,
  wrongStatus,
  wrongLength,
  noPicture,
  frozen,
  restart,
  lostTrigger,
  doubledTrigger,
  random
};

// What comes about at a head. A picture is a command, too; a moment is the passing of time.
enum class Occasion { greeting, command, picture, trigger, moment };

inline constexpr std::string_view greetingName = "greeting";  // stands for the greeting where a command's name may stand
inline constexpr std::uint64_t everyTime = std::numeric_limits<std::uint64_t>::max();
inline constexpr std::chrono::milliseconds withoutEnd{0};

struct Fault {
  std::string text;  // as it was given

  std::uint64_t after = 0;               // so many of `counted` go well
  Occasion counted = Occasion::command;  // command, picture or trigger
  std::string command;                   // counts and strikes this one only; empty: any
  std::chrono::milliseconds delay{0};    // since it was set
  std::uint64_t times = everyTime;       // how often it strikes

  FaultAction action = FaultAction::stall;
  std::int64_t number = 0;            // its byte, bytes a second, status, surplus of bytes, or seed
  std::chrono::milliseconds time{0};  // how long it lasts
  double rate = 0;                    // of random faults: the share of commands and triggers that they strike
};

// Whether a person's name for a command means this one: all of it, what is behind "MSG_", or that without its "SL", in any case.
bool means(std::string_view given, std::string_view command);

}  // namespace fringix::head
