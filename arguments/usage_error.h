// What a user gave wrong on the command line.
#pragma once

#include <stdexcept>
#include <string>

namespace fringix::arguments {

class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& complaint) : std::runtime_error(complaint) {}
  UsageError(const std::string& argument, const std::string& complaint) : UsageError(argument + ": " + complaint) {}
};

}  // namespace fringix::arguments
