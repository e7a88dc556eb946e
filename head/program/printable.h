// Text of strangers, for a terminal or a log.
#pragma once

#include <string>
#include <string_view>

namespace fringix::head {

// Every byte that is no visible ASCII character as \xNN, so that no text moves the cursor, hides a line or makes one up.
std::string printable(std::string_view text);

}  // namespace fringix::head
