// The page that a report is filled into: page.html, which the build turns into a source.
#pragma once

#include <string_view>

namespace fringix::tool {

std::string_view reportPage();

}  // namespace fringix::tool
