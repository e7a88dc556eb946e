// DejaVu Sans Mono, the file.
#pragma once

#include <string_view>

namespace fringix::tool {

std::string_view typeface();

}  // namespace fringix::tool
