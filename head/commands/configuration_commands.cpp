// Configuration values, by section and key.
#include <charconv>
#include <optional>
#include <string>

#include "head/commands/commands.h"

namespace fringix::head {

namespace {

ConfigurationKey readKey(Wire& wire) {
  ConfigurationKey key;
  key.section = wire.readText();
  key.key = wire.readText();
  return key;
}

std::optional<std::int32_t> parseNumber(const std::string& text) {
  std::int32_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc{} && stop == end ? std::optional(value) : std::nullopt;
}

constexpr Command commands[] = {
    {"82MSG_SLReadIniInt", 0,
     [](Call& call) {
       std::int32_t value = 0;
       const Status status = call.model.configuration().read(readKey(call.wire), value);
       call.wire.writeInt(value);
       call.reply(status);
     }},
    {"83MSG_SLWriteIniInt", 0,
     [](Call& call) {
       const ConfigurationKey key = readKey(call.wire);
       const auto value = parseNumber(call.wire.readText());
       call.reply(value ? call.model.configuration().write(key, *value) : Status::badParameter);
     }},
};

}  // namespace

CommandFamily configurationCommands() { return commands; }

}  // namespace fringix::head
