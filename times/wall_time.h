// Times of day as texts. The system's own ways to them are not for several threads, and {fmt}'s are slow to compile.
#pragma once

#include <chrono>
#include <ctime>
#include <string>

namespace fringix {

using WallTime = std::chrono::system_clock::time_point;

// As std::strftime writes it, e.g. "%H:%M:%S"; empty where the system has no date for a time.
std::string localText(WallTime time, const char* format);
std::string universalText(WallTime time, const char* format);
std::string universalText(std::time_t time, const char* format);

std::string millisecondText(WallTime time);  // ".007": what is beyond its whole second

}  // namespace fringix
