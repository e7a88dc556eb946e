#include "triggers/listener_process.h"

#include <stdexcept>

namespace fringix::test {

namespace {

constexpr std::string_view triggerWord = "trigger ";
constexpr std::string_view traceWord = "trace ";

}  // namespace

ListenerProcess::ListenerProcess(const std::string& address) : ListenerProcess(TRIGGER_LISTENER, {address}) {}

ListenerProcess::ListenerProcess(const std::string& program, const std::vector<std::string>& arguments) : process_(program, arguments) {
  if (!open()) throw std::runtime_error("the listener does not open its session");
}

ListenerProcess::~ListenerProcess() {
  process_.closeInput();
  process_.wait(std::chrono::seconds(5));
}

bool ListenerProcess::ask(const std::string& command, const std::string& answer) {
  process_.write(command + "\n");
  return !process_.waitForLine(answer).empty();
}

void ListenerProcess::kill() {
  process_.kill();
  process_.wait();
}

std::optional<TimePoint> ListenerProcess::hears(int count, TimePoint since) {
  while (count > 0) {
    const std::string line = process_.waitForLine(triggerWord);
    if (line.empty()) return std::nullopt;
    const TimePoint time{std::chrono::microseconds(std::stoll(line.substr(triggerWord.size())))};
    if (time > since && --count == 0) return time;
  }
  return since;
}

int ListenerProcess::traced(std::string_view part) {
  process_.write("trace\n");
  int count = 0;
  for (auto line = process_.nextLine(); line && *line != "end of trace"; line = process_.nextLine()) {
    if (line->starts_with(traceWord) && line->find(part) != std::string::npos) ++count;
  }
  return count;
}

long long ListenerProcess::askForNumber(const std::string& command, std::string_view word) {
  process_.write(command + "\n");
  const std::string line = process_.waitForLine(word);
  if (line.empty()) throw std::runtime_error("the listener does not answer");
  return std::stoll(line.substr(word.size()));
}

std::chrono::microseconds ListenerProcess::processorTime() {
  return std::chrono::microseconds(askForNumber("processor time", "microseconds "));
}

int ListenerProcess::descriptors() { return static_cast<int>(askForNumber("descriptors", "descriptors ")); }

}  // namespace fringix::test
