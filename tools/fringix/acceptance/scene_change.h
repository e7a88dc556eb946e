// Going through the scenes of a simulated head.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <string>
#include <vector>

#include "acceptance/artefacts.h"

namespace fringix::tool {

// While it lives, other scenes may stand before the head; then the first one stands there again.
class SceneChange {
 public:
  SceneChange(const Device& head, const std::string& address);  // throws Failure when the head is no simulated one
  ~SceneChange();
  SceneChange(const SceneChange&) = delete;
  SceneChange& operator=(const SceneChange&) = delete;

  void show(Artefact artefact, std::uint32_t position) const;

 private:
  const Device& head_;
  std::vector<std::uint8_t> first_;
};

// What the text of truth.json tells of the artefact: what a certificate would.
Certified certifiedBy(const std::string& text);

}  // namespace fringix::tool
