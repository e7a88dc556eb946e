#include "support/export_list.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace fringix::test {

std::vector<std::string> readExportList(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> names;
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string name;
    std::string ordinal;
    if (words >> name >> ordinal && ordinal.starts_with('@')) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace fringix::test
