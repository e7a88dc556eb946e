// What a hostile process does to the listeners of a host: each waits for the end of its input. None uses the library.
#pragma once

#include <string>

namespace fringix::test {

// False when there is no such attack.
bool attack(const std::string& name);

}  // namespace fringix::test
