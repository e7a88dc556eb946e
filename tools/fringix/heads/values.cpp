#include "heads/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "arguments/suggestion.h"
#include "arguments/usage_error.h"

namespace fringix::tool {
namespace {

constexpr Range anyNumber{std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
constexpr Range oneByte{0, 255};

template <auto getter>
std::int64_t read(const Device& head) {
  return (head.*getter)();
}

template <auto getter>
Range range(const Device& head) {
  return (head.*getter)();
}

template <auto setter>
void write(const Device& head, std::int32_t number) {
  (head.*setter)(number);
}

void writeDirectLedPower(const Device& head, std::int32_t number) { head.setDirectLedPower(static_cast<std::uint8_t>(number)); }

// Units as the documented heads have them; the library passes on whatever a head says.
constexpr Value values[] = {
    {"self-check", "self-check", "what the head finds when it checks itself", nullptr, 0, read<&Device::checkSystem>, nullptr, nullptr,
     anyNumber},
    {"uptime", "uptime", "how long the head has been on", "s", 2800, read<&Device::uptime>, nullptr, nullptr, anyNumber},
    {"temperature", "temperature", "temperature of the head", "degC", 2400, read<&Device::temperature>, nullptr, nullptr, anyNumber},
    {"projector-temperature", "projector temperature", "temperature of the projector", "degC", 3000, read<&Device::projectorTemperature>,
     nullptr, nullptr, anyNumber},
    {"projector-status", "projector status", "state of the projector", nullptr, 3000, read<&Device::projectorStatus>, nullptr, nullptr,
     anyNumber},
    {"led-power", "LED power", "power of the projector's light", nullptr, 0, read<&Device::ledPower>, range<&Device::ledPowerRange>,
     write<&Device::setLedPower>, anyNumber},
    {"direct-led-power", "direct LED power", "the same, 0 to 255, past the range of led-power", nullptr, 3300, nullptr, nullptr,
     writeDirectLedPower, oneByte},
    {"brightness", "brightness", "level of the projector's brightness, from 1", nullptr, 0, read<&Device::brightness>,
     range<&Device::brightnessRange>, write<&Device::setBrightness>, anyNumber},
    {"dmd", "DMD state", "state of the projector's mirrors; the simulated head takes 0, off, and 1, on", nullptr, 2900, nullptr, nullptr,
     write<&Device::setDmdState>, anyNumber},
    {"gain", "gain", "gain of the cameras", nullptr, 0, read<&Device::gain>, range<&Device::gainRange>, write<&Device::setGain>, anyNumber},
    {"exposure", "exposure", "exposure of the cameras", "us", 3100, read<&Device::exposure>, nullptr, nullptr, anyNumber},
    {"channels", "camera channels", "number of the cameras", nullptr, 2600, read<&Device::channelCount>, nullptr, nullptr, anyNumber},
};

bool allows(const Value& value, Access access) { return access == Access::read ? value.read != nullptr : value.write != nullptr; }

std::vector<std::string> namesFor(Access access) {
  std::vector<std::string> names;
  for (const Value& value : values) {
    if (allows(value, access)) names.emplace_back(value.name);
  }
  return names;
}

}  // namespace

std::span<const Value> allValues() { return values; }

const Value& findValue(const std::string& name, Access access) {
  const auto* found = std::find_if(std::begin(values), std::end(values), [&](const Value& value) { return value.name == name; });
  if (found == std::end(values))
    throw arguments::UsageError("NAME", fmt::format("there is no value \"{}\"{}", name, arguments::didYouMean(name, namesFor(access))));
  if (access == Access::write && name == "exposure")
    throw arguments::UsageError("NAME",
                                "\"exposure\" is part of the configuration: \"fringix ini write ADDRESS Camera Exposure VALUE\" sets it");
  if (!allows(*found, access))
    throw arguments::UsageError("NAME", fmt::format("\"{}\" can only be {}", name, access == Access::read ? "set" : "read"));
  return *found;
}

std::string listValues(Access access) {
  std::string list;
  for (const Value& value : values) {
    if (allows(value, access))
      list += fmt::format("\n  {:<23}{}{}", value.name, value.meaning, value.unit == nullptr ? "" : fmt::format(", in {}", value.unit));
  }
  return list;
}

}  // namespace fringix::tool
