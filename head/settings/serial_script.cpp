#include "head/settings/serial_script.h"

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace fringix::head {

namespace {

constexpr std::string_view arrow = "=>";
constexpr std::size_t longestLine = 4096;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

SerialAnswer parseLine(std::string_view line, std::size_t number) {
  const std::size_t split = line.find(arrow);
  const auto command = trimmed(line.substr(0, split));
  const auto reply = split != std::string_view::npos ? trimmed(line.substr(split + arrow.size())) : std::string_view{};
  if (command.empty() || reply.empty() || line.size() > longestLine)
    throw std::runtime_error("line " + std::to_string(number) + " of the serial script is not \"command => reply\"");
  return {std::string(command), std::string(reply)};
}

}  // namespace

SerialScript parseSerialScript(std::istream& input) {
  SerialScript script;
  std::string text;
  for (std::size_t number = 1; std::getline(input, text); ++number) {
    const std::string_view line = trimmed(text);
    if (!line.empty() && line.front() != '#') script.push_back(parseLine(line, number));
  }
  return script;
}

}  // namespace fringix::head
