// What a mistyped word may have been meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace fringix::arguments {

// To go behind a message: `, did you mean "live"?`, or nothing when no known word is near.
std::string didYouMean(std::string_view word, std::span<const std::string> known);

}  // namespace fringix::arguments
