// A session opened through the library's exports.
#pragma once

#include <fringix/fringix.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "head.h"

namespace fringix::bench {

inline void requireSuccess(std::int32_t status) {
  if (status != SLALL_OKAY) throw std::runtime_error(std::string("library: ") + SLErrorcodeToChar(status));
}

class LibrarySession {
 public:
  LibrarySession() { requireSuccess(SLDevAlloc(headAddress, &handle_)); }
  ~LibrarySession() { SLDevFree(handle_); }
  LibrarySession(const LibrarySession&) = delete;
  LibrarySession& operator=(const LibrarySession&) = delete;

  std::int32_t handle() const noexcept { return handle_; }

 private:
  std::int32_t handle_ = -1;
};

}  // namespace fringix::bench
