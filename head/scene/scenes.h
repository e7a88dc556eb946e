// Scenes by what people call them.
#pragma once

#include <memory>
#include <string>

#include "head/scene/scene.h"

namespace fringix::head {

// "default", "plane", "sphere", "ballbar", "stairs", "board", one with the number of its place ("ballbar:3"), or a mesh's file. Throws
// std::runtime_error that says what can be said. All who ask for one of the named scenes while another holds it share it.
std::shared_ptr<const Scene> makeScene(const std::string& name);

}  // namespace fringix::head
