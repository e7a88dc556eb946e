// What people type for a head's address: the address itself, or a host's name that this machine can look up.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace fringix::tool {

// Empty when a head may be called that; otherwise what is wrong with it, for a message about wrong usage. Looks nothing up.
std::string whatIsWrongWithAddress(const std::string& text);

struct LookUp {
  std::string address;  // empty: the name has no IPv4 address
  std::string reason;   // why, in the system's words
};

// Asks the system, which may take as long as it likes.
LookUp lookUp(const std::string& name);

// The dotted decimal address. Throws Failure when the name is unknown, or `ask` does not tell within `limit`.
std::string resolveAddress(const std::string& text, std::chrono::milliseconds limit,
                           std::function<LookUp(const std::string&)> ask = lookUp);

}  // namespace fringix::tool
