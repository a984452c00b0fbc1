/// @file
/// Meshes drawn from subsets: sphere, teapot, text. They replace what a mesh drew before; their vertices count as the
/// mesh's, but are not in its lists.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>
#include <string>

namespace ql::mesh {

/// @param texture index in the texture table, for all groups; 0: none @param slices,stacks around and along the y axis
/// @throws engine::EngineError 91 without a device, 6 beyond 32767 vertices; device::DeviceError invalid call for a
/// radius below 0 and fewer than 2 slices or stacks
void createSphere(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, float radius,
                  std::int32_t slices, std::int32_t stacks);
/// Scaled by 4. @throws engine::EngineError 91 without a device
void createTeapot(engine::EngineContext& context, MeshHandle& mesh);
/// Solid letters, scaled by 4. @param userFont name of a user font of any screen; "" and unknown names: the engine's
/// own font @throws engine::EngineError 91 without a device; device::DeviceError invalid call for a text that shows
/// nothing
void create3DText(engine::EngineContext& context, MeshHandle& mesh, const std::string& text,
                  const std::string& userFont);

}  // namespace ql::mesh
