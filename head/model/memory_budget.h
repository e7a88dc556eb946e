// Memory that all clients of a head share while they send or fetch something large. Who needs some takes a share first.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>

namespace fringix::head {

// Safe to use from several threads; outlives its shares.
class MemoryBudget {
 public:
  // A part of the budget, given back when this ends.
  class Share {
   public:
    Share() = default;
    Share(Share&& other) noexcept : budget_(std::exchange(other.budget_, nullptr)), bytes_(other.bytes_) {}
    Share& operator=(Share&& other) noexcept;
    ~Share();

   private:
    friend class MemoryBudget;
    Share(MemoryBudget& budget, std::size_t bytes) : budget_(&budget), bytes_(bytes) {}

    MemoryBudget* budget_ = nullptr;
    std::size_t bytes_ = 0;
  };

  explicit MemoryBudget(std::size_t capacity) : capacity_(capacity) {}
  MemoryBudget(const MemoryBudget&) = delete;
  MemoryBudget& operator=(const MemoryBudget&) = delete;

  std::optional<Share> take(std::size_t bytes);  // nothing when that much is not left
  std::size_t left() const;

 private:
  void giveBack(std::size_t bytes) noexcept;

  const std::size_t capacity_;
  mutable std::mutex mutex_;
  std::size_t taken_ = 0;
};

}  // namespace fringix::head
