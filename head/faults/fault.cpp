#include "head/faults/fault.h"

#include <algorithm>

namespace fringix::head {

namespace {

char lowered(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool sameLetters(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lowered(x) == lowered(y); });
}

}  // namespace

bool means(std::string_view given, std::string_view command) {
  constexpr std::string_view prefix = "MSG_";
  constexpr std::string_view maker = "SL";
  if (sameLetters(given, command)) return true;
  const std::size_t found = command.find(prefix);
  if (found == std::string_view::npos) return false;
  const std::string_view bare = command.substr(found + prefix.size());
  return sameLetters(given, bare) || (bare.starts_with(maker) && sameLetters(given, bare.substr(maker.size())));
}

}  // namespace fringix::head
