// The commands that are compared: one row each, made by the library and by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "head.h"
#include "measurement.h"
#include "minimal_client.h"

namespace fringix::bench {

// On one core a call's latency is the work that both sides do. On two it is mostly the wake-up of an idle core, which hides
// what the client costs, but a transfer then runs as fast as the client reads.
enum class Cores { one, two };

struct Comparison {
  std::string name;
  Head head;
  Cores cores;
  std::size_t bytes;  // of the picture or pattern that one call moves
  std::int32_t (*library)(std::int32_t handle, const Head& head, std::uint8_t* buffer);
  void (*byHand)(MinimalClient& client, const Head& head, std::uint8_t* buffer);
  std::vector<Quantity> quantities;
};

inline constexpr std::size_t bufferSize = std::size_t{64} << 20;  // what `buffer` above has

const std::vector<Comparison>& comparisons();

// Both clients against one server. Throws when a call fails or the two do not get the same bytes.
Measurement measure(const Comparison& comparison, const Plan& plan);

}  // namespace fringix::bench
