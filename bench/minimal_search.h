// The hand-written opponent for searches: one request into each network, and answers until none comes for 300 ms.
#pragma once

#include <cstddef>

namespace fringix::bench {

std::size_t minimalSearch();  // in the private networks; how many heads answered

}  // namespace fringix::bench
