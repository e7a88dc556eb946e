#include "triggers/listener.h"

#include <cstdio>
#include <fringix/fringix.hpp>
#include <iostream>
#include <optional>
#include <string>

#include "support/captured_trace.h"
#include "support/process_state.h"

namespace fringix::test {

namespace {

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

void printTrace(CapturedTrace& trace) {
  for (const std::string& line : trace.lines()) print("trace " + line.substr(0, line.find_first_of("\r\n")));
  print("end of trace");
}

}  // namespace

int runListener(const std::string& address) {
  CapturedTrace trace;
  setTracing(true);
  std::optional<Session> session;
  for (std::string command; std::getline(std::cin, command);) {
    if (command == "open") session.emplace(address), print("opened");
    if (command == "close") session.reset(), print("closed");
    if (command == "trace") printTrace(trace);
    if (command == "processor time") print("microseconds " + std::to_string(processorTime().count()));
    if (command == "descriptors") print("descriptors " + std::to_string(descriptorCount()));
  }
  return 0;
}

}  // namespace fringix::test
