// Findings and facts for people, on lines of 80 characters, and for programs.
#pragma once

#include <string>

#include "console/json.h"
#include "diagnosis/facts.h"
#include "diagnosis/finding.h"

namespace fringix::tool::diagnosis {

const char* inWords(Colour colour);  // "green"
Colour worstOf(const Findings& findings);
std::size_t count(const Findings& findings, Colour colour);
std::string titleOf(const Finding& finding);  // "interface eth0"

// All: those of this machine, those of each head, and how many there are of each colour. `coloured`: for a terminal that shows them.
std::string format(const Findings& findings, bool coloured);

Json toJson(const Facts& facts, const Findings& findings);

// What is not as it was: a line for each, "green -> RED  connection 192.168.0.10: ...". Empty: all is as it was.
std::string formatChanges(const Findings& before, const Findings& now);

}  // namespace fringix::tool::diagnosis
