// Triangle meshes in files: PLY (ASCII and binary) and STL (ASCII and binary).
#pragma once

#include <string>

#include "head/scene/mesh.h"

namespace fringix::head {

bool isMeshFile(const std::string& name);  // by its ending

// Throws std::runtime_error that says what is wrong with the file.
MeshData readMesh(const std::string& file);

}  // namespace fringix::head
