#include "soak/growth.h"

#include <algorithm>
#include <cstdio>

namespace fringix::test {

namespace {

constexpr std::size_t kibibyte = 1024;

// Sessions come and go while samples are taken, and the memory of their threads with them: the bounds leave room for that.
constexpr std::array<HeldKind, heldKinds> kinds{{{"heap", " KiB", kibibyte, 128 * kibibyte},
                                                 {"resident", " KiB", kibibyte, 4096 * kibibyte},
                                                 {"descriptors", "", 1, 10},
                                                 {"threads", "", 1, 10}}};

std::size_t median(std::vector<std::size_t> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::size_t medianOf(const std::vector<Sample>& samples, std::size_t begin, std::size_t end, Held held) {
  std::vector<std::size_t> values;
  for (std::size_t i = begin; i < end; ++i) values.push_back(samples[i].held[held]);
  return median(std::move(values));
}

}  // namespace

const HeldKind& kindOf(Held held) { return kinds[held]; }

Growth growthOf(const std::vector<Sample>& samples, Held held) {
  const std::size_t third = samples.size() / 3;
  const std::size_t bound = kindOf(held).bound;
  Growth growth{samples.front().held[held], medianOf(samples, third, 2 * third, held), medianOf(samples, 2 * third, samples.size(), held),
                0, false};
  const std::uint64_t operations = samples[2 * third].operations - samples[third].operations;
  growth.noticedAnOperation = static_cast<double>(bound) / static_cast<double>(std::max<std::uint64_t>(operations, 1));
  growth.tooMuch = growth.last > growth.warm + bound;
  return growth;
}

std::string describe(Held held, const Growth& growth) {
  const HeldKind& kind = kindOf(held);
  const auto shown = [&](std::size_t value) { return std::to_string(value / kind.perUnit) + kind.unit; };
  char noticed[32];
  std::snprintf(noticed, sizeof noticed, "%.3g", growth.noticedAnOperation);
  return std::string(kind.name) + ": first " + shown(growth.first) + ", warm " + shown(growth.warm) + ", last " + shown(growth.last) +
         "; may grow by " + shown(kind.bound) + ", which a loss of " + noticed + (kind.perUnit == 1 ? "" : " bytes") +
         " an operation breaks" + (growth.tooMuch ? ": TOO MUCH" : "");
}

}  // namespace fringix::test
