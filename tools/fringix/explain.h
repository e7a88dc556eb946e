// Failures in words: what happened, with the status code and its name, and what to do next.
#pragma once

#include <fringix/fringix.hpp>
#include <string>

namespace fringix::tool {

inline constexpr int commandPort = 44330;

struct Explanation {
  std::string what;
  std::string next;
};

Explanation explain(const Error& error, const std::string& address);

}  // namespace fringix::tool
