// Whether a process holds more and more: what it held at many moments, judged by medians.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fringix::test {

enum Held : std::size_t { heap, resident, descriptors, threads, heldKinds };

struct Sample {
  std::array<std::size_t, heldKinds> held{};
  std::uint64_t operations = 0;
};

struct HeldKind {
  const char* name;
  const char* unit;
  std::size_t perUnit;
  std::size_t bound;  // by which the median of the last third may be above that of the second third; the first third is the warm-up
};

const HeldKind& kindOf(Held held);

struct Growth {
  std::size_t first, warm, last;  // the first sample, and the medians of the second and the last third
  double noticedAnOperation;      // what each operation would have to lose for the bound to break
  bool tooMuch;
};

// Of three samples or more, taken at even intervals.
Growth growthOf(const std::vector<Sample>& samples, Held held);

std::string describe(Held held, const Growth& growth);

}  // namespace fringix::test
