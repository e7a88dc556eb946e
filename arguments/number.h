// Numbers from the command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "arguments/argument.h"

namespace fringix::arguments {

// The number that a text is, all of it, decimal or, for integers, hexadecimal after 0x. Throws UsageError, which tells the limits.
template <class Number>
Number toNumber(const std::string& text, const Limits& limits);

extern template std::int32_t toNumber<std::int32_t>(const std::string&, const Limits&);
extern template std::uint32_t toNumber<std::uint32_t>(const std::string&, const Limits&);
extern template std::int64_t toNumber<std::int64_t>(const std::string&, const Limits&);
extern template std::uint64_t toNumber<std::uint64_t>(const std::string&, const Limits&);
extern template double toNumber<double>(const std::string&, const Limits&);

}  // namespace fringix::arguments
