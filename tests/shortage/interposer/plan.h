// What the functions that stand in front of the C library's have in common.
#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cerrno>

#include "shortage.h"

#define FRINGIX_INTERPOSED extern "C" __attribute__((visibility("default")))

namespace fringix::shortage {

// In the order of the table in plan.cpp.
enum Function : int {
  memory,
  mapping,
  socketCall,
  connectCall,
  bindCall,
  acceptCall,
  optionCall,
  sendCall,
  receiveCall,
  pollCall,
  threadCall,
  eventCall,
  pipeCall,
  openCall,
  readCall,
  writeCall,
  renameCall,
  functionCount
};

// What came of a plan.
struct Counts {
  std::atomic<unsigned> struck{0};
  std::atomic<unsigned> calls[functionCount]{};
};
void countIn(Counts& place) noexcept;  // from now on

inline constexpr int nothing = -2;  // that fails

bool watched() noexcept;
bool isWatched() noexcept;          // by itself, not because all are
bool setWatched(bool on) noexcept;  // of this thread; what it was
bool hurries() noexcept;
void noteBlocks(long more) noexcept;

// How the call that is about to be made fails. `canBeShort`: whether it could move less than it is asked to, or meet an end.
int strike(Function function, bool canBeShort = false) noexcept;

template <class Result>
Result failed(int failure, Result result) noexcept {
  errno = failure;
  return result;
}

// The same function of whoever comes next.
template <class Type>
Type* next(const char* name) noexcept {
  return reinterpret_cast<Type*>(dlsym(RTLD_NEXT, name));
}

}  // namespace fringix::shortage
