#include "acceptance/votes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace fringix::tool {
namespace {

using Cube = std::array<std::int32_t, 3>;

struct CubeHash {
  std::size_t operator()(const Cube& cube) const {
    std::uint64_t hash = 0;
    for (const std::int32_t part : cube) hash = (hash ^ static_cast<std::uint32_t>(part)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(hash ^ hash >> 32);
  }
};

struct Votes {
  std::size_t count = 0;
  Place sum{};

  void add(const Votes& more) {
    count += more.count;
    sum = sum + more.sum;
  }
};

using Poll = std::unordered_map<Cube, Votes, CubeHash>;

Cube cubeOf(const Place& place, double cell) {
  const auto part = [cell](double number) { return static_cast<std::int32_t>(std::clamp(std::floor(number / cell), -1e9, 1e9)); };
  return {part(place[0]), part(place[1]), part(place[2])};
}

Votes votesAround(const Poll& poll, const Cube& middle) {
  Votes votes;
  for (std::int32_t x = -1; x <= 1; ++x) {
    for (std::int32_t y = -1; y <= 1; ++y) {
      for (std::int32_t z = -1; z <= 1; ++z) {
        const auto found = poll.find({middle[0] + x, middle[1] + y, middle[2] + z});
        if (found != poll.end()) votes.add(found->second);
      }
    }
  }
  return votes;
}

}  // namespace

Place mostNamed(std::span<const Place> places, double cell) {
  Poll poll;
  for (const Place& place : places) poll[cubeOf(place, cell)].add({1, place});
  Votes most;
  for (const auto& [cube, votes] : poll) {
    const Votes around = votesAround(poll, cube);
    if (around.count > most.count) most = around;
  }
  return most.sum * (1 / static_cast<double>(most.count));
}

}  // namespace fringix::tool
