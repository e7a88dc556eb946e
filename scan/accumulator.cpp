#include "accumulator.h"

#include <algorithm>
#include <atomic>
#include <string>

#include "failure.h"
#include "parallel.h"

namespace fringix::scan {

const std::uint8_t* pixelsOf(const std::uint8_t* picture, std::size_t pixels, std::size_t strip, Strip<std::uint8_t>& copy) {
  const std::size_t start = strip * stripLength;
  if (start + stripLength <= pixels) return picture + start;
  copy.fill(0);
  std::copy(picture + start, picture + pixels, copy.begin());
  return copy.data();
}

Accumulator::Accumulator(const Plan& plan, std::size_t pixels, std::size_t threads) : plan_(plan), pixels_(pixels), threads_(threads) {
  const std::size_t strips = stripsOf(pixels);
  for (std::size_t first = 0; first < strips; first += batchStrips) {
    batches_.push_back(std::make_unique<SumsOfStrips>(plan, std::min(batchStrips, strips - first)));
  }
}

void Accumulator::add(const std::uint8_t* picture) {
  if (complete()) throw Failure(Status::badPictures, "all " + std::to_string(taken()) + " pictures of the plan are there already");
  const PictureRole& role = plan_.pictures()[taken()];
  std::atomic<std::uint64_t> total{0};
  inParallel(threads_, batches_.size(), [&](std::size_t batch) { total += addTo(batch, role, picture); });
  totals_.push_back(total);
}

std::uint64_t Accumulator::addTo(std::size_t batch, const PictureRole& role, const std::uint8_t* picture) {
  Strip<std::uint8_t> copy;
  std::uint64_t total = 0;
  const std::size_t first = batch * batchStrips;
  const std::size_t end = std::min(first + batchStrips, stripsOf(pixels_));
  for (std::size_t strip = first; strip < end; ++strip) {
    total += scan::add(role, pixelsOf(picture, pixels_, strip, copy), (*batches_[batch])[strip - first]);
  }
  return total;
}

}  // namespace fringix::scan
