// Which faults strike when: asked at every occasion of a head, and changed while it runs.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "head/faults/fault.h"

namespace fringix::head {

// Safe to use from several threads.
class FaultPlan {
 public:
  struct Entry {
    Fault fault;
    std::chrono::steady_clock::time_point set;
    std::uint64_t seen = 0;    // of what it counts
    std::uint64_t struck = 0;  // times
  };

  void add(Fault fault);  // counts from now on
  void clear();           // all is well again, a frozen head too
  std::vector<Entry> entries() const;

  // Those that strike now, in the order in which they were added. Faults of the whole head take effect here; the others are up to the
  // caller. Costs next to nothing while there are none.
  std::vector<Fault> strike(Occasion occasion, std::string_view command = {});

  // Whether the head is frozen or restarting: it does nothing then.
  bool away() const;
  // How long the head is to be gone, once after each fault that says so; it is away until restarted() is called.
  std::optional<std::chrono::milliseconds> takeRestart();
  void restarted();  // or will not be

  std::uint64_t edition() const { return edition_; }  // another one after each change

 private:
  using Clock = std::chrono::steady_clock;

  void strikeHead(const Fault& fault);

  std::atomic<std::uint64_t> edition_ = 0;
  std::atomic<bool> calm_ = true;  // nothing to look for
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
  Clock::time_point frozenUntil_{};
  std::optional<std::chrono::milliseconds> restart_;
  bool restarting_ = false;
};

}  // namespace fringix::head
