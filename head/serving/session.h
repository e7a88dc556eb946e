// One client's connection: greets, then serves commands until the client goes, stalls, says something unknown, or the head is stopped.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "head/faults/fault_plan.h"
#include "head/model/head_model.h"
#include "head/serving/trigger_output.h"
#include "head/wire/wire.h"
#include "platform/socket.h"

namespace fringix::head {

enum class Happening { found, connected, refused, command, trouble, fault, disconnected };

// Told what happens, with the client's address; called on the head's threads.
using Observer = std::function<void(Happening happening, const std::string& client, const std::string& text)>;

std::string nameOf(platform::Ipv4Endpoint client);  // "ADDRESS:PORT"

class Session {
 public:
  // The rest of the head outlives it.
  Session(platform::Socket socket, platform::Ipv4Endpoint client, HeadModel& model, FaultPlan& faults, TriggerOutput& triggers,
          const Observer& observer);
  ~Session();  // ends the connection and waits for the thread, if there is one
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void run() noexcept;  // until the session is over
  void start();         // the same on a thread of its own

  void requestStop() noexcept;
  void requestReset() noexcept;  // stops, and resets the connection
  bool finished() const noexcept { return finished_; }

 private:
  void serve();
  void meetFaults(Wire& wire, Occasion occasion, std::string_view command);
  void tell(Happening happening, const std::string& text) const;

  platform::Socket socket_;
  const std::string client_;
  HeadModel& model_;
  FaultPlan& faults_;
  TriggerOutput& triggers_;
  const Link link_;
  const Observer& observer_;
  std::atomic<bool> stopping_ = false;
  std::atomic<bool> reset_ = false;  // instead of an end in order
  std::atomic<bool> finished_ = false;
  std::thread thread_;
};

}  // namespace fringix::head
