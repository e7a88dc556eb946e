// What the functions that stand in front of the system's have in common.
#pragma once

#include <atomic>

#include "shortage.h"

#ifdef _WIN32  // a part of the test program
#define FRINGIX_INTERPOSED extern "C"
#else
#define FRINGIX_INTERPOSED extern "C" __attribute__((visibility("default")))
#endif

namespace fringix::shortage {

// In the order of the rows.
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

constexpr int mostFailures = 6;

// What a function is called, and how it fails. Each platform has its own; what it has no use for fails in no way.
struct Row {
  const char* name;
  int failures[mostFailures];
};
extern const Row rows[functionCount];

bool passes(int failure) noexcept;      // by itself: whoever tries again gets on
bool isHarmless(int failure) noexcept;  // see shortage.h
const char* nameOf(int failure) noexcept;

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

}  // namespace fringix::shortage
