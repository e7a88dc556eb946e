#include "head/program/printable.h"

namespace fringix::head {

namespace {

bool isVisible(char character) { return character >= ' ' && character <= '~'; }

std::string escaped(char character) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (isVisible(character) && character != '\\')
      result += character;
    else
      result += escaped(character);
  }
  return result;
}

}  // namespace fringix::head
