// The mesh in an STL file.
#pragma once

#include <string_view>

#include "head/scene/mesh.h"

namespace fringix::head {

// Three vertices for each triangle, in the file's order; its normals are passed over. Throws std::runtime_error.
MeshData parseStl(std::string_view content);

}  // namespace fringix::head
