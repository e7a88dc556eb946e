// Failures in words: what happened, with the status code and its name, and what to do next.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <stdexcept>
#include <string>
#include <utility>

namespace fringix::tool {

inline constexpr int commandPort = 44330;

struct Explanation {
  std::string what;
  std::string next;
  std::string kind = "failure";  // for programs: one word, or the name of the status
  std::int32_t status = 0;       // of the library, where it was the library that failed
};

// A failure whose place knows how to explain it.
class Failure : public std::runtime_error {
 public:
  explicit Failure(Explanation explanation) : std::runtime_error(explanation.what), explanation_(std::move(explanation)) {}
  const Explanation& explanation() const noexcept { return explanation_; }

 private:
  Explanation explanation_;
};

std::string inBrackets(const Error& error);  // "(SLBAD_PARAMETER, -3)"; a head's own number, above 0, has no name: "(7)"

Explanation explain(const Error& error, const std::string& address);

}  // namespace fringix::tool
