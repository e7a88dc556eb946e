// What the head's blocks are written with. It is slow to compile, so the two files that include it are compiled as one.
#pragma once

#include <nlohmann/json.hpp>

#include "head/geometry/vector.h"

namespace fringix::head {

using Json = nlohmann::ordered_json;

inline Json toJson(const Vector& v) { return {v.x, v.y, v.z}; }

}  // namespace fringix::head
