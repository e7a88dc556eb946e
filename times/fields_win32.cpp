#include "times/fields.h"

namespace fringix {

std::optional<std::tm> localFields(std::time_t time) {
  std::tm fields{};
  return localtime_s(&fields, &time) == 0 ? std::optional(fields) : std::nullopt;
}

std::optional<std::tm> universalFields(std::time_t time) {
  std::tm fields{};
  return gmtime_s(&fields, &time) == 0 ? std::optional(fields) : std::nullopt;
}

}  // namespace fringix
