#include "head/model/configuration.h"

#include <limits>

#include "head/geometry/mount.h"

namespace fringix::head {

namespace {

constexpr std::int32_t usualExposure = 20000;
constexpr Range anything{std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};

const ConfigurationKey exposureKey{"Camera", "Exposure"};

bool isName(const std::string& text) { return !text.empty() && text.size() <= Configuration::longestName; }

}  // namespace

Configuration::Configuration(const HeadSettings& settings) {
  const auto fixed = [this](const char* section, const char* key, std::int32_t value) {
    values_[{section, key}] = {value, {value, value}};
  };
  fixed("Head", "SerialNumber", settings.serial);
  fixed("Head", "ProtocolVersion", settings.protocolVersion);
  fixed("Camera", "Channels", channelCount);
  fixed("Camera", "Width", settings.camera.width);
  fixed("Camera", "Height", settings.camera.height);
  fixed("Projector", "Width", settings.projector.width);
  fixed("Projector", "Height", settings.projector.height);
  values_[exposureKey] = {usualExposure, exposureRange};
}

Status Configuration::read(const ConfigurationKey& key, std::int32_t& value) const {
  const std::lock_guard lock(mutex_);
  const auto found = values_.find(key);
  value = found != values_.end() ? found->second.value : 0;
  return found != values_.end() ? Status::ok : Status::unknownKey;
}

Status Configuration::write(const ConfigurationKey& key, std::int32_t value) {
  if (!isName(key.section) || !isName(key.key)) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  const auto found = values_.find(key);
  if (found == values_.end() && values_.size() >= mostValues) return Status::outOfMemory;
  if (found == values_.end()) return values_[key] = {value, anything}, Status::ok;
  if (!found->second.range.contains(value)) return Status::badParameter;
  found->second.value = value;
  return Status::ok;
}

std::int32_t Configuration::exposure() const {
  std::int32_t exposure = 0;
  read(exposureKey, exposure);
  return exposure;
}

double Configuration::exposureFactor() const { return static_cast<double>(exposure()) / usualExposure; }

}  // namespace fringix::head
