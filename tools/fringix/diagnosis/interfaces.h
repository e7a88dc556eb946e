// The IPv4 addresses of this machine, with what is known of the interfaces that have them. They have no answers yet.
#pragma once

#include <vector>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

std::vector<Interface> readInterfaces();

}  // namespace fringix::tool::diagnosis
