/// @file
/// Drawing meshes.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>

namespace ql::mesh {

/// Draws all groups of a mesh, with their shaders or blending, and its children. Disabled meshes, meshes without
/// vertices and those that are known to be out of view draw nothing; a death time runs down once a frame.
/// @throws engine::EngineError 91 without a device, device::DeviceError
void renderMesh(engine::EngineContext& context, std::int16_t slot);
/// Draws some groups of a mesh and its children: with light maps and the mesh's culling, without shaders and blending.
/// A death time runs down with each call. Children are drawn this way too.
/// @param last 0: the last group @throws as renderMesh; engine::EngineError 9 for a group that does not exist
void renderGroupRange(engine::EngineContext& context, std::int16_t slot, std::int32_t first, std::int32_t last);
/// Draws every mesh that has no parent, in order of slots.
void renderAllMeshes(engine::EngineContext& context);

/// Joins the meshes to a started engine: what was drawn in a frame is forgotten at its end.
void startMeshes(engine::EngineContext& context);

}  // namespace ql::mesh
