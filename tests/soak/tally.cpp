#include "soak/tally.h"

#include <algorithm>
#include <cstdio>

namespace fringix::test {

namespace {

constexpr std::size_t mostViolations = 50;

}  // namespace

void Tally::add(std::string_view function, int status, std::chrono::milliseconds took) {
  Row& row = rows_[function];
  const auto place = std::find(statuses.begin(), statuses.end(), status);
  ++row.count[static_cast<std::size_t>(place - statuses.begin())];
  row.longest = std::max(row.longest, took);
}

void Tally::add(const Tally& other) {
  for (const auto& [function, added] : other.rows_) {
    Row& row = rows_[function];
    for (std::size_t i = 0; i < row.count.size(); ++i) row.count[i] += added.count[i];
    row.longest = std::max(row.longest, added.longest);
  }
}

void Tally::print() const {
  std::printf("%-24s", "operations by status");
  for (const int status : statuses) std::printf("%9d", status);
  std::printf("%9s%11s\n", "other", "longest");
  for (const auto& [function, row] : rows_) {
    std::printf("%-24.*s", static_cast<int>(function.size()), function.data());
    for (const std::uint64_t count : row.count) std::printf("%9llu", static_cast<unsigned long long>(count));
    std::printf("%8lld ms\n", static_cast<long long>(row.longest.count()));
  }
}

void Violations::add(const std::string& what) {
  const std::lock_guard guard(mutex_);
  if (list_.size() < mostViolations) list_.push_back(what);
}

std::vector<std::string> Violations::list() const {
  const std::lock_guard guard(mutex_);
  return list_;
}

}  // namespace fringix::test
