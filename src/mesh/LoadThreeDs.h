/// @file
/// Filling a mesh from a 3D Studio file.
#pragma once

#include "mesh/MeshRecord.h"

#include <string>

namespace ql::mesh {

/// Every object becomes a group, every triangle three vertices of a triangle list; an object's material gives the group
/// its texture and a new engine material. Errors are logged, a line per chunk is too; nothing is raised.
/// @param fileName taken from the open archive when it is not on disk; then it becomes the extracted copy's name
void loadThreeDs(engine::EngineContext& context, MeshHandle& mesh, std::string& fileName);

}  // namespace ql::mesh
