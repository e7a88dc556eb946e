#include "times/fields.h"

namespace fringix {

std::optional<std::tm> localFields(std::time_t time) {
  std::tm fields{};
  return localtime_r(&time, &fields) == nullptr ? std::nullopt : std::optional(fields);
}

std::optional<std::tm> universalFields(std::time_t time) {
  std::tm fields{};
  return gmtime_r(&time, &fields) == nullptr ? std::nullopt : std::optional(fields);
}

}  // namespace fringix
