// A process with one session, for tests that need several processes. It prints "trigger TIME" for each trigger, and does what the lines
// of its input say: open and close the session, print the library's trace so far, print its processor time.
#include <cstdio>
#include <fringix/fringix.hpp>
#include <iostream>
#include <optional>
#include <string>

#include "support/captured_trace.h"
#include "support/process_state.h"

namespace {

using namespace fringix;

// A line in one piece: triggers are printed by another thread.
void print(const std::string& line) {
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

void printTrigger(std::int32_t, std::int64_t) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();  // the same clock in all processes
  print("trigger " + std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
}

struct Session {
  explicit Session(const std::string& address) : device(address) {}
  Device device;
  Subscription subscription{device, printTrigger};
};

void printTrace(test::CapturedTrace& trace) {
  for (const std::string& line : trace.lines()) print("trace " + line.substr(0, line.find_first_of("\r\n")));
  print("end of trace");
}

}  // namespace

int main(int, char** arguments) {
  test::CapturedTrace trace;
  setTracing(true);
  std::optional<Session> session;
  for (std::string command; std::getline(std::cin, command);) {
    if (command == "open") session.emplace(arguments[1]), print("opened");
    if (command == "close") session.reset(), print("closed");
    if (command == "trace") printTrace(trace);
    if (command == "processor time") print("microseconds " + std::to_string(test::processorTime().count()));
  }
}
