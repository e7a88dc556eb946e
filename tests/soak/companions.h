// The processes beside a soak: the heads, and another one that listens to triggers.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "soak/plan.h"
#include "support/child_process.h"

namespace fringix::test {

// Somebody who takes what a process prints, line by line, so that nothing piles up.
class Reader {
 public:
  using Take = void (*)(Reader& reader, std::string_view line);
  Reader(const std::string& program, const std::vector<std::string>& arguments, Take take);
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  ChildProcess process;
  std::atomic<std::uint64_t> number = 0;  // that the process told
  std::atomic<std::uint64_t> lines = 0;   // that told one

 private:
  void read(Take take);

  std::atomic<bool> over_ = false;
  std::thread thread_;
};

class Heads {
 public:
  explicit Heads(const SoakPlan& plan);  // throws when they cannot be had

  static std::string address(std::size_t head) { return "127.0.1." + std::to_string(1 + head); }
  static std::int32_t serial(std::size_t head) { return 1001 + static_cast<std::int32_t>(head); }
  std::uint32_t sequence(std::size_t head) const { return sequences_[head]; }

  void misbehave(std::uint64_t seed, double rate);
  void trigger(std::size_t head);
  std::uint64_t faultsStruck();

 private:
  void prepare(std::size_t head);

  std::vector<std::uint32_t> sequences_;  // two images each, measured
  Reader reader_;
};

class Follower {
 public:
  Follower();
  std::uint64_t heard() const { return reader_.number; }

 private:
  Reader reader_;
};

using TriggerCount = std::atomic<std::uint64_t>;

// An event handler; its context is a TriggerCount that outlives the session.
void countTrigger(std::int32_t event, void* count, std::int64_t parameter);

// The follower from inside: counts the triggers of a head until it is killed, with a session that it opens anew when it fails.
int runFollower(const std::string& address);

}  // namespace fringix::test
