// The operating system that this runs on.
#pragma once

#include <string>

namespace fringix::tool {

std::string systemName();  // "Linux 6.1.0-18-amd64 x86_64", "Windows 10.0.19045"

}  // namespace fringix::tool
