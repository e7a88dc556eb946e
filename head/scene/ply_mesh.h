// The mesh in a PLY file.
#pragma once

#include <string_view>

#include "head/scene/mesh.h"

namespace fringix::head {

// Polygons are cut into triangles; what is neither a vertex's place nor a face's corners is passed over. Throws std::runtime_error.
MeshData parsePly(std::string_view content);

}  // namespace fringix::head
