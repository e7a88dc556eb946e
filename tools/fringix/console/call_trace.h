// What --trace adds to the library's own trace lines, which stay as they are: before each call a line with the time, after it one with
// the time, the status and how long it took. All of them go to standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace fringix::tool {

// Switches both on, for the rest of the process.
void traceCalls();

// "12:30:15.123 SLGetGain", in local time.
std::string formatCallBegin(std::chrono::system_clock::time_point time, const char* operation);
// "12:30:15.125 SLGetGain: SLALL_OKAY (0) after 1.3 ms"
std::string formatCallEnd(std::chrono::system_clock::time_point time, const char* operation, std::int32_t status,
                          std::chrono::duration<double, std::milli> duration);

}  // namespace fringix::tool
