// The exposures of a scan: a series for what is dark and what is bright, set on the head and taken back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <vector>

namespace fringix::tool {

inline constexpr std::size_t longestSeries = 5;

// The first `count` of these: the present exposure, whose grey levels are those of the points, a quarter of it, four times, half, and
// twice. So a series measures no less than a single exposure does.
std::vector<std::int32_t> exposureSeries(std::int32_t present, std::size_t count);

std::int32_t presentExposure(const Device& head);

// While it lives the head's exposure can be another one.
class ChangedExposure {
 public:
  explicit ChangedExposure(const Device& head) : head_(head), before_(presentExposure(head)) {}
  ~ChangedExposure();
  ChangedExposure(const ChangedExposure&) = delete;
  ChangedExposure& operator=(const ChangedExposure&) = delete;

  void set(std::int32_t exposure) const;  // in microseconds; throws Failure when the head refuses it

 private:
  const Device& head_;
  std::int32_t before_;
};

}  // namespace fringix::tool
