// Files that the build turns into sources.
#pragma once

#include <string_view>

namespace fringix::tool {

std::string_view statusPage();  // docs/statuses.md
std::string_view exportList();  // the library's module definition file

}  // namespace fringix::tool
