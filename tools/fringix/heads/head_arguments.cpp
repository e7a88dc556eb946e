#include "heads/head_arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace fringix::tool {
namespace {

constexpr const char* blockingNote =
    "Connecting blocks until the operating system gives up: where nothing answers,\nthat takes from some seconds to minutes.";

bool isByte(std::string_view text) {
  const bool digits = std::all_of(text.begin(), text.end(), [](char c) { return '0' <= c && c <= '9'; });
  return digits && !text.empty() && text.size() <= 3 && std::stoi(std::string(text)) <= 255;
}

bool isAddress(std::string_view text) {
  for (int i = 0; i < 3; ++i) {
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || !isByte(text.substr(0, dot))) return false;
    text.remove_prefix(dot + 1);
  }
  return isByte(text);
}

std::string checkAddress(const std::string& text) {
  return isAddress(text) ? "" : fmt::format("\"{}\" is no IPv4 address such as 192.168.0.10", text);
}

void addHead(arguments::Command& command, bool bySerial, arguments::Target address, const char* addressHelp, arguments::Target serial,
             const char* serialHelp) {
  if (!bySerial) command.positional("ADDRESS", std::move(address), addressHelp).required().check(checkAddress);
  command.option("--serial", std::move(serial), serialHelp).valueName("N");
  command.note(blockingNote);
}

}  // namespace

void addAddress(arguments::Command& command, Context& context) {
  addHead(command, context.bySerial, &context.address, "IPv4 address of the head, such as 192.168.0.10", &context.serial,
          "Serial number of the head, in place of ADDRESS: it is searched for");
}

void addAddresses(arguments::Command& command, const Context& context, std::vector<std::string>& addresses,
                  std::vector<std::int32_t>& serials) {
  addHead(command, context.bySerial, &addresses, "IPv4 addresses of the heads, such as 192.168.0.10", &serials,
          "Serial numbers of the heads, in place of the addresses: they are searched for");
}

}  // namespace fringix::tool
