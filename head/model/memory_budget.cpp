#include "head/model/memory_budget.h"

namespace fringix::head {

MemoryBudget::Share& MemoryBudget::Share::operator=(Share&& other) noexcept {
  std::swap(budget_, other.budget_);
  std::swap(bytes_, other.bytes_);
  return *this;
}

MemoryBudget::Share::~Share() {
  if (budget_ != nullptr) budget_->giveBack(bytes_);
}

std::optional<MemoryBudget::Share> MemoryBudget::take(std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  if (bytes > capacity_ - taken_) return std::nullopt;
  taken_ += bytes;
  return Share(*this, bytes);
}

std::size_t MemoryBudget::left() const {
  const std::lock_guard lock(mutex_);
  return capacity_ - taken_;
}

void MemoryBudget::giveBack(std::size_t bytes) noexcept {
  const std::lock_guard lock(mutex_);
  taken_ -= bytes;
}

}  // namespace fringix::head
