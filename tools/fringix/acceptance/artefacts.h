// What a head is accepted with: things whose measures are certified, each at several positions of the measuring volume.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::tool {

enum class Artefact { sphere, ballBar, plane };

inline constexpr Artefact allArtefacts[] = {Artefact::sphere, Artefact::ballBar, Artefact::plane};

struct ArtefactKind {
  const char* name;         // on command lines and in files, and of the simulated head's scenes
  const char* words;        // for people: "the ball"
  std::uint32_t positions;  // at least so many make an acceptance
  std::size_t balls;
};

const ArtefactKind& kindOf(Artefact artefact);
Artefact artefactOf(std::string_view name);  // throws std::invalid_argument

// Lengths in mm.
struct Certified {
  double diameter = 0;  // of each ball
  double spacing = 0;   // of the balls' centres
  double flatness = 0;  // of the plate itself
};

}  // namespace fringix::tool
