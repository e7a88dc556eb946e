// Triangle meshes in files: PLY (ASCII and binary) and STL (ASCII and binary).
#pragma once

#include <string>
#include <string_view>

#include "head/scene/mesh.h"

namespace fringix::head {

bool isMeshFile(const std::string& name);  // by its ending

// Both throw std::runtime_error that says what is wrong with the file.
MeshData parseMesh(const std::string& name, std::string_view content);
MeshData readMesh(const std::string& file);

}  // namespace fringix::head
