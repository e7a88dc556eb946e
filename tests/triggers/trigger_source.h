// A head that raises a trigger every few milliseconds, beside the test.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "head/serving/head_server.h"

namespace fringix::test {

class TriggerSource {
 public:
  explicit TriggerSource(std::chrono::milliseconds interval) : head_(settings()), thread_([this, interval] { run(interval); }) {}
  ~TriggerSource() {
    over_ = true;
    thread_.join();
  }
  TriggerSource(const TriggerSource&) = delete;
  TriggerSource& operator=(const TriggerSource&) = delete;

  const std::string& address() const { return head_.model().settings().address; }

 private:
  static head::HeadSettings settings() {
    head::HeadSettings settings;
    settings.camera = {64, 48};
    settings.projector = {32, 20};
    return settings;
  }

  void run(std::chrono::milliseconds interval) {
    for (auto next = std::chrono::steady_clock::now(); !over_; next += interval) {
      head_.raiseTrigger();
      std::this_thread::sleep_until(next);
    }
  }

  struct StartedHead : head::HeadServer {
    explicit StartedHead(const head::HeadSettings& settings) : HeadServer(settings) { start(); }
  } head_;
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

}  // namespace fringix::test
