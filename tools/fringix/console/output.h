// Standard output and standard error as a program has them that other programs read.
#pragma once

#include <string>

#include "console/explain.h"

namespace fringix::tool {

// For the whole process, first of all: a reader that has gone is an error of the write, and a stream that was closed stays so, instead
// of becoming the next socket.
void prepareStandardStreams();

// Hands on what was printed so far. Throws Failure when not all of it could be written.
void flushOutput();

// Whether what was printed could not be written some time, and what that means.
bool outputFailed();
Explanation explainOutputFailure(const std::string& reason = {});

// A line on standard error, at once. Where it cannot be written there is nobody to tell.
void tell(const std::string& line);

// The same for what went wrong, in two lines for people or in one for programs.
void tell(const Explanation& explanation, bool asJson);

}  // namespace fringix::tool
