// The integer values that a head keeps by section and key, and the one setting that has no command of its own: the exposure.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "head/settings/head_settings.h"
#include "head/settings/range.h"
#include "head/settings/status.h"

namespace fringix::head {

struct ConfigurationKey {
  std::string section;
  std::string key;
  auto operator<=>(const ConfigurationKey&) const = default;
};

// Safe to use from several threads.
class Configuration {
 public:
  static constexpr std::size_t longestName = 64;   // of a section and of a key
  static constexpr std::size_t mostValues = 1000;  // so that no client fills the head's memory
  static constexpr Range exposureRange{100, 100000};

  explicit Configuration(const HeadSettings& settings);

  Status read(const ConfigurationKey& key, std::int32_t& value) const;  // an unknown key has the value 0
  Status write(const ConfigurationKey& key, std::int32_t value);        // makes a new value where there is none

  std::int32_t exposure() const;  // in microseconds
  double exposureFactor() const;  // 1 at the start

 private:
  struct Value {
    std::int32_t value;
    Range range;
  };

  mutable std::mutex mutex_;
  std::map<ConfigurationKey, Value> values_;
};

}  // namespace fringix::head
