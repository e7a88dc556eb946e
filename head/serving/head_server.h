// A head on the network: a model, the port that it listens on, a thread for each client.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <thread>

#include "head/faults/fault_plan.h"
#include "head/model/head_model.h"
#include "head/serving/announcer.h"
#include "head/serving/session.h"
#include "head/serving/trigger_output.h"
#include "head/settings/head_settings.h"
#include "platform/socket.h"
#include "ports/command_port.h"

namespace fringix::head {

using ports::commandPort;

class HeadServer {
 public:
  // `observer` may be empty.
  explicit HeadServer(HeadSettings settings, Observer observer = {});
  ~HeadServer() { stop(); }
  HeadServer(const HeadServer&) = delete;
  HeadServer& operator=(const HeadServer&) = delete;

  // Returns once clients can find the head and connect; throws std::runtime_error with a text for people when the address, or the
  // port of searches, cannot be listened on.
  void start();
  // Ends all connections and returns when every thread has ended. start() may follow.
  void stop() noexcept;

  HeadModel& model() noexcept { return model_; }
  const HeadModel& model() const noexcept { return model_; }

  // What goes wrong on purpose; may be changed at any time.
  FaultPlan& faults() noexcept { return faults_; }

  // Raises a GPIO trigger, from any thread, unless a fault loses it; gives the number of hosts that were told.
  std::size_t raiseTrigger();

 private:
  void acceptClients() noexcept;
  void acceptClient();
  void forgetFinished();
  void tellRefusals();
  bool faultsKeepAway();
  void restart(std::chrono::milliseconds gone);
  bool listenAgain() noexcept;

  const platform::SocketLibrary library_;
  HeadModel model_;
  FaultPlan faults_;
  TriggerOutput triggers_;
  const Observer observer_;
  Announcer announcer_;
  std::atomic<bool> stopping_ = false;
  std::mutex listenerMutex_;  // held while the listener is another one, and by whoever stops it
  platform::Socket listener_;
  std::list<Session> sessions_;  // these are touched by the accepting thread only, while it runs
  std::size_t refused_ = 0;      // clients, since the observer was told of any
  platform::Ipv4Endpoint lastRefused_;
  std::chrono::steady_clock::time_point nextTelling_;
  std::thread acceptor_;
};

}  // namespace fringix::head
