#include "exposures.h"

namespace fringix::scan {

namespace {

constexpr float deviations = 6;
constexpr float tolerance = 0.1F;  // in columns, for what noise does not explain

std::int32_t rankOf(std::uint8_t reason) {
  if (reason == static_cast<std::uint8_t>(Reason::none)) return 0;
  return reason == static_cast<std::uint8_t>(Reason::saturation) ? 2 : 1;
}

bool contradict(const DecodedStrip& first, const DecodedStrip& second, std::size_t i) {
  const float difference = first.column[i] - second.column[i];
  return difference * difference > deviations * deviations * (first.variance[i] + second.variance[i]) + tolerance * tolerance;
}

bool isBetter(const DecodedStrip& other, const DecodedStrip& kept, std::size_t i) {
  const std::int32_t rank = rankOf(other.reason[i]);
  const std::int32_t rankOfKept = rankOf(kept.reason[i]);
  return rank < rankOfKept || (rank == rankOfKept && other.variance[i] < kept.variance[i]);
}

}  // namespace

void takeBetter(const DecodedStrip& other, DecodedStrip& kept) {
  for (std::size_t i = 0; i < stripLength; ++i) {
    const bool moved = other.reason[i] == 0 && kept.reason[i] == 0 && contradict(other, kept, i);
    if (isBetter(other, kept, i)) {
      kept.column[i] = other.column[i];
      kept.variance[i] = other.variance[i];
      kept.modulation[i] = other.modulation[i];
      kept.offset[i] = other.offset[i];
      kept.misfit[i] = other.misfit[i];
      kept.reason[i] = other.reason[i];
    }
    if (moved) kept.reason[i] = static_cast<std::uint8_t>(Reason::unsteady);
  }
}

}  // namespace fringix::scan
