/// @file
/// Filling a mesh from a DirectX X file.
#pragma once

#include "mesh/MeshRecord.h"

#include <string>

namespace ql::mesh {

/// All meshes of the file become one, drawn by subsets: group k + 1 stands for the file's material k, with a new entry
/// of the material table and the material's texture. A texture that does not exist as it is named is taken from the
/// file's folder.
/// @throws host::FileFault when the file cannot be read, device::DeviceError invalid data when it is damaged or has no
/// triangles, engine::EngineError 6 beyond 32767 materials; nothing changed
void loadXFile(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName);

}  // namespace ql::mesh
