#include "soak/choices.h"

namespace fringix::test {

namespace {

std::seed_seq::result_type part(std::uint64_t number, unsigned index) {
  return static_cast<std::seed_seq::result_type>(number >> (32U * index) & 0xFFFFFFFFU);
}

std::mt19937_64 begun(std::uint64_t seed, std::size_t thread) {
  std::seed_seq all{part(seed, 0), part(seed, 1), part(thread, 0)};
  return std::mt19937_64(all);
}

}  // namespace

Choices::Choices(std::uint64_t seed, std::size_t thread, std::size_t slots)
    : random_(begun(seed, thread)), slots_(slots), searches_(thread == 0) {}

Choice Choices::next() {
  const Action action = drawAction();
  const std::size_t slot = random_() % slots_;
  return {action, slot, static_cast<std::size_t>(random_() >> 8U)};
}

Action Choices::drawAction() {
  const std::uint64_t thousandth = random_() % 1000;
  if (thousandth < 25) return Action::renew;
  if (thousandth < 26) return Action::end;
  if (thousandth < 31) return Action::unknown;
  if (thousandth < 100) return Action::local;
  return thousandth < 110 && searches_ ? Action::search : Action::call;
}

}  // namespace fringix::test
