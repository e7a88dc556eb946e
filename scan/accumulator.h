// Takes the pictures of one camera, one at a time, in the plan's order, and keeps their sums.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "plan.h"
#include "sums.h"

namespace fringix::scan {

class Accumulator {
 public:
  Accumulator(const Plan& plan, std::size_t pixels, std::size_t threads);

  void add(const std::uint8_t* picture);  // throws Failure when it has all
  bool complete() const noexcept { return totals_.size() == plan_.pictures().size(); }
  std::size_t taken() const noexcept { return totals_.size(); }
  const std::vector<std::uint64_t>& totals() const noexcept { return totals_; }  // of the levels of each picture

  // The sums, in batches of strips; one that is not needed any more can be given up.
  static constexpr std::size_t batchStrips = 64;
  SumsOfStrips& batch(std::size_t number) { return *batches_[number]; }
  void giveUp(std::size_t number) noexcept { batches_[number].reset(); }

 private:
  std::uint64_t addTo(std::size_t batch, const PictureRole& role, const std::uint8_t* picture);

  const Plan& plan_;
  std::size_t pixels_;
  std::size_t threads_;
  std::vector<std::unique_ptr<SumsOfStrips>> batches_;
  std::vector<std::uint64_t> totals_;
};

// The pixels of a strip of a picture: its own, or, of a last strip that is not full, a copy with zeros behind.
const std::uint8_t* pixelsOf(const std::uint8_t* picture, std::size_t pixels, std::size_t strip, Strip<std::uint8_t>& copy);

}  // namespace fringix::scan
