#include "acceptance/scene_change.h"

#include <fmt/format.h>

#include "console/explain.h"
#include "scanning/truth.h"

namespace fringix::tool {
namespace {

constexpr const char* sceneName = "scene.txt";

// Empty when the head has none: a real one may call that a failure.
std::vector<std::uint8_t> sceneOf(const Device& head) {
  try {
    return head.loadData(sceneName);
  } catch (const Error& error) {
    if (error.code() == SLCONNECTION_ERROR) throw;
    return {};
  }
}

}  // namespace

SceneChange::SceneChange(const Device& head, const std::string& address) : head_(head), first_(sceneOf(head)) {
  if (first_.empty()) {
    throw Failure({fmt::format("the head at {} is no simulated one, or an older one", address),
                   "Before a real head you place the artefacts: give --artefact in place of --simulated."});
  }
}

SceneChange::~SceneChange() {
  try {
    head_.saveData(sceneName, first_);
  } catch (const Error&) {  // the connection is lost, and with it the wish
  }
}

void SceneChange::show(Artefact artefact, std::uint32_t position) const {
  const std::string scene = fmt::format("{}:{}", kindOf(artefact).name, position);
  head_.saveData(sceneName, {scene.begin(), scene.end()});
}

Certified certifiedBy(const std::string& text) {
  const Truth truth = readTruth(text);
  if (truth.spheres.empty()) return {};
  return {2 * truth.spheres.front().radius, length(truth.spheres.back().centre - truth.spheres.front().centre)};
}

}  // namespace fringix::tool
