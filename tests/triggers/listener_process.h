// The program in listener.cpp, as a test sees it.
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/child_process.h"

namespace fringix::test {

using TimePoint = std::chrono::steady_clock::time_point;

class ListenerProcess {
 public:
  explicit ListenerProcess(const std::string& address);                                    // with an open session
  ListenerProcess(const std::string& program, const std::vector<std::string>& arguments);  // likewise, started in another way

  ~ListenerProcess();  // lets it end in order
  ListenerProcess(const ListenerProcess&) = delete;
  ListenerProcess& operator=(const ListenerProcess&) = delete;

  bool open() { return ask("open", "opened"); }
  bool close() { return ask("close", "closed"); }
  void kill();

  // Waits for this many triggers after a time. When the last of them was heard; nothing when that takes more than 20 seconds.
  std::optional<TimePoint> hears(int count, TimePoint since);

  bool hearsNothing(std::chrono::milliseconds duration) { return process_.waitForLine("trigger ", duration).empty(); }

  int traced(std::string_view part);                                        // how many of the library's trace lines so far have this part
  bool isReceiver() { return traced("GPIOThread: Trigger occured!") > 0; }  // nobody else looks at datagrams

  std::chrono::microseconds processorTime();  // that it has used so far
  int descriptors();                          // that it has open

 private:
  bool ask(const std::string& command, const std::string& answer);
  long long askForNumber(const std::string& command, std::string_view word);

  ChildProcess process_;
};

// Whether no listener keeps a core busy, watched for a fifth of a second. Each is a pointer.
template <class Listeners>
bool areCalm(const Listeners& listeners) {
  constexpr std::chrono::milliseconds watched{200};
  std::vector<std::chrono::microseconds> before;
  for (const auto& listener : listeners) before.push_back(listener->processorTime());
  std::this_thread::sleep_for(watched);
  return std::equal(listeners.begin(), listeners.end(), before.begin(),
                    [&](const auto& listener, auto earlier) { return listener->processorTime() - earlier < watched / 2; });
}

}  // namespace fringix::test
