#include "acceptance/artefacts.h"

#include <stdexcept>

namespace fringix::tool {
namespace {

constexpr ArtefactKind kinds[] = {{"sphere", "the ball", 10, 1}, {"ballbar", "the ball bar", 7, 2}, {"plane", "the plate", 6, 0}};

}  // namespace

const ArtefactKind& kindOf(Artefact artefact) { return kinds[static_cast<std::size_t>(artefact)]; }

Artefact artefactOf(std::string_view name) {
  for (const Artefact artefact : allArtefacts) {
    if (kindOf(artefact).name == name) return artefact;
  }
  throw std::invalid_argument("\"" + std::string(name) + "\" is none of sphere, ballbar and plane");
}

}  // namespace fringix::tool
