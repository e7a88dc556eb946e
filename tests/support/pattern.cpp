#include "support/pattern.h"

#include <regex>

namespace fringix::test {

bool matches(const std::string& text, const std::string& pattern) { return std::regex_match(text, std::regex(pattern)); }

bool contains(const std::string& text, const std::string& pattern) { return std::regex_search(text, std::regex(pattern)); }

}  // namespace fringix::test
