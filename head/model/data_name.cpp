#include "head/model/data_name.h"

#include <algorithm>
#include <string>

namespace fringix::head {

namespace {

constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view digits = "0123456789";

bool isOneOf(char character, std::string_view set) { return set.find(character) != std::string_view::npos; }

bool isWordCharacter(char character) { return isOneOf(character, letters) || isOneOf(character, digits) || character == '_'; }

bool isAllowed(char character) { return isWordCharacter(character) || isOneOf(character, ".- "); }

std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (char& character : upper) {
    if (const std::size_t index = letters.find(character); index < letters.size()) character = letters[index % (letters.size() / 2)];
  }
  return upper;
}

// Windows takes these for devices in every folder, whatever follows the first point.
bool isDevice(std::string_view name) {
  const std::string_view stem = name.substr(0, name.find('.'));
  const std::string device = upperCase(stem.substr(0, stem.find_last_not_of(' ') + 1));
  if (device == "CON" || device == "PRN" || device == "AUX" || device == "NUL") return true;
  return device.size() == 4 && (device.starts_with("COM") || device.starts_with("LPT")) && isOneOf(device.back(), digits);
}

}  // namespace

bool isDataName(std::string_view name) {
  if (name.empty() || name.size() > longestDataName) return false;
  const bool allowed = std::all_of(name.begin(), name.end(), isAllowed);
  return allowed && isWordCharacter(name.front()) && !isOneOf(name.back(), ". ") && !isDevice(name);
}

}  // namespace fringix::head
