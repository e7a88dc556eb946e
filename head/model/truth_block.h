// The data block that tells what really stands before a head.
#pragma once

#include <cstddef>

#include "head/model/data_store.h"
#include "head/scene/scene.h"

namespace fringix::head {

inline constexpr const char* truthBlockName = "truth.json";
inline constexpr std::size_t mostTrianglesTold = 200'000;  // of a larger mesh only the name and the number of triangles

Block truthBlock(const Scene& scene);

}  // namespace fringix::head
