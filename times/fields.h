// The year, the month ... of a time, on any thread. None where the system has none for it.
#pragma once

#include <ctime>
#include <optional>

namespace fringix {

std::optional<std::tm> localFields(std::time_t time);
std::optional<std::tm> universalFields(std::time_t time);

}  // namespace fringix
