// The kept lists of what the libraries export.
#pragma once

#include <string>
#include <vector>

namespace fringix::test {

// The names in a list with lines such as "  SLDevAlloc @1", sorted.
std::vector<std::string> readExportList(const std::string& path);

}  // namespace fringix::test
