// Texts of which a part is not known before. A header of its own, because the standard library's patterns take long to compile.
#pragma once

#include <string>

namespace fringix::test {

bool matches(const std::string& text, const std::string& pattern);   // the whole text
bool contains(const std::string& text, const std::string& pattern);  // a part of it

}  // namespace fringix::test
