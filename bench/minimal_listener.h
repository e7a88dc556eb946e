// The hand-written opponent for triggers: a thread that is blocked in poll on its port and on what ends it.
#pragma once

#include <cstdint>
#include <thread>

#include "descriptor.h"
#include "trigger_arrival.h"

namespace fringix::bench {

class MinimalListener {
 public:
  MinimalListener(std::uint16_t port, TriggerArrival& arrival);
  ~MinimalListener();
  MinimalListener(const MinimalListener&) = delete;
  MinimalListener& operator=(const MinimalListener&) = delete;

 private:
  void listen();

  TriggerArrival& arrival_;
  Descriptor socket_;
  Descriptor stop_;
  std::thread thread_;
};

}  // namespace fringix::bench
