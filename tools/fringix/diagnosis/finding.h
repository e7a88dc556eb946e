// What the doctor has to say: one thing that was looked at, how it is, and what to do.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fringix::tool::diagnosis {

enum class Colour { green, yellow, red };

struct Finding {
  std::string area;     // one of few words, for programs, too: "interface", "firewall"
  std::string subject;  // which of them: an interface's name, a head's address; may be empty
  Colour colour = Colour::green;
  std::string what;         // the facts
  std::string meaning;      // for somebody who wants to work with the heads
  std::string next;         // one thing to do; empty where there is nothing
  std::string paste;        // a line for the shell that does it, where there is one
  std::int32_t status = 0;  // what the library's functions give because of it
};

using Findings = std::vector<Finding>;

}  // namespace fringix::tool::diagnosis
