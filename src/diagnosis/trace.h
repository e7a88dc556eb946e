// Trace output: silent while the debug flag is zero. Any thread may trace; a line is never mixed with another.
#pragma once

#include <cstdint>

namespace fringix {

void setDebugFlag(std::int32_t flag) noexcept;
bool tracing() noexcept;

// Formats as printf does and writes "<QOR> ", the message without trailing white space, and a line end. Messages are cut to 4093
// characters.
void trace(const char* format, ...) noexcept;

}  // namespace fringix
