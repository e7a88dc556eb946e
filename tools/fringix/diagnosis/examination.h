// Talks to a head as a client does, without the library, and takes the time of each step.
#pragma once

#include <chrono>
#include <string>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

// Begins a session, asks a hundred small questions, fetches live pictures and ends. Changes nothing on the head. Each step has `limit`.
Head examineHead(const std::string& address, std::chrono::milliseconds limit);

// Opens a session with the library as programs do, and listens for triggers for at least so long.
Session trySession(const std::string& address, std::chrono::milliseconds time);

}  // namespace fringix::tool::diagnosis
