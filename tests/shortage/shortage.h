// Makes calls of the system fail on purpose: the n-th of one function, or all from the n-th on. On Linux libfringix-shortage.so stands in
// front of the C library for that, linked before it or preloaded; on Windows the library's table of imports leads elsewhere. Only threads
// that are watched meet failures.
#pragma once

namespace fringix::shortage {

// How a call fails: an error of the system, or one of these.
enum Failure : int { shortCount = 0, endOfFile = -1 };

}  // namespace fringix::shortage

extern "C" {

// What can fail, counted from 0; null where there is no more. The failures that fit end with `shortage_no_failure`.
const char* shortage_function(int function);
const int* shortage_failures(int function);
extern const int shortage_no_failure;
const char* shortage_failure_name(int failure);

// Whether a call goes on after that failure as if nothing had happened: it was interrupted, or has moved less than it was asked to.
int shortage_is_harmless(int failure);

// From now on call number `first` of the function fails, counted from 0, and with `lasting` those behind it, too. Of a failure that passes,
// such as an interruption, every third one is left out then, so that whoever tries again gets on. One plan at a time.
void shortage_plan(int function, int failure, unsigned first, int lasting);
unsigned shortage_end(void);            // how often it has struck
unsigned shortage_calls(int function);  // of watched threads since the last plan

// The calling thread, and all that it starts while it is watched; or all threads there are.
void shortage_watch(int on);
void shortage_watch_all(void);

// Blocks of memory that watched threads, on Windows all threads of the library, have taken and not given back.
long shortage_blocks(void);

// Watched threads do not pause, and waits that others would take for a silence of 300 ms or so are over after a tenth.
void shortage_hurry(int on);
}
