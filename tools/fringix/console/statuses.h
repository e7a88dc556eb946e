// What docs/statuses.md says of each status, for the terminal.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace fringix::tool {

struct StatusText {
  std::string code;  // "-10"
  std::string name;  // "SLCONNECTION_ERROR"; empty for a number of a head's own
  std::string text;  // what it means, its usual causes and the next step
};

std::vector<StatusText> statusTexts();

// By its number, with or without the sign, or by its name in fringix.h or scan.h; nothing for another word.
std::optional<StatusText> findStatus(const std::string& codeOrName);

std::vector<std::string> callNames();  // of all functions that the library exports

}  // namespace fringix::tool
