// Answers searches of the network with a head's announcement, from the head's own address.
#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <thread>

#include "head/faults/fault_plan.h"
#include "head/model/head_model.h"
#include "platform/socket.h"

namespace fringix::head {

class Announcer {
 public:
  // Told of each answer, with the client's address; called on the announcer's thread.
  using Observer = std::function<void(const std::string& client)>;

  // The model and the faults outlive it.
  Announcer(const HeadModel& model, const FaultPlan& faults, Observer observer);
  ~Announcer() { stop(); }
  Announcer(const Announcer&) = delete;
  Announcer& operator=(const Announcer&) = delete;

  // Throws std::runtime_error with a text for people when the port cannot be listened on.
  void start();
  void stop() noexcept;

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Answer {
    Time due;
    platform::Ipv4Endpoint client;
  };

  void serve() noexcept;
  void takeRequest();
  void sendDueAnswers();

  const platform::SocketLibrary library_;
  const HeadModel& model_;
  const FaultPlan& faults_;
  const std::uint32_t address_;
  const Observer observer_;
  platform::Socket socket_;
  std::deque<Answer> answers_;  // earliest first; touched by the thread only
  std::atomic<bool> stopping_ = false;
  std::thread thread_;
};

}  // namespace fringix::head
