// What the operations of a soak have given, and how long they took.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::test {

class Tally {
 public:
  void add(std::string_view function, int status, std::chrono::milliseconds took);
  void add(const Tally& other);
  void print() const;

 private:
  // Only so many places: what a head hands on may be any number, and all others share one.
  static constexpr std::array statuses{0, -2, -3, -4, -10, -11, -30, -40};
  struct Row {
    std::array<std::uint64_t, statuses.size() + 1> count{};
    std::chrono::milliseconds longest{};
  };

  std::map<std::string_view, Row> rows_;
};

// What must not have happened. Any thread may add.
class Violations {
 public:
  void add(const std::string& what);
  std::vector<std::string> list() const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> list_;
};

}  // namespace fringix::test
