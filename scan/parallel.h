// Work that falls into independent pieces, on several threads.
#pragma once

#include <cstddef>
#include <functional>

namespace fringix::scan {

// Calls `work` with every piece from 0 to `pieces` - 1, each once, on the calling thread and up to `threads` - 1 others, and returns
// when all are done. What it throws on any thread is thrown on. Threads that the system refuses are done without.
void inParallel(std::size_t threads, std::size_t pieces, const std::function<void(std::size_t piece)>& work);

}  // namespace fringix::scan
