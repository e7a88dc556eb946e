// Where trace lines go, and the bounded formatting that makes them.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace fringix::platform {

// Hands one finished line to the debugger's output (Windows) or, in a single write, to standard error, where it is lost when the reader
// does not keep up or has gone.
void writeDebugOutput(const char* line) noexcept;

// Formats into `buffer` at most `limit` characters and a terminating zero (so `buffer` holds at least limit + 1). Gives the number
// of characters, or a negative value when the text was cut or could not be formatted; what fitted is in the buffer either way.
int formatBounded(char* buffer, std::size_t limit, const char* format, std::va_list arguments) noexcept;

}  // namespace fringix::platform
