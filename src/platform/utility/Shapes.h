/// @file
/// Solids to begin with.
#pragma once

#include "platform/utility/SubsetMesh.h"

#include <cstdint>
#include <memory>

namespace ql::utility {

/// A sphere about the origin, its poles on the y axis. Texture coordinates go once around it, from the upper pole down.
/// @param slices around the axis @param stacks along it
/// @throws device::DeviceError invalid call: a radius below 0, fewer than 2 slices or stacks
std::shared_ptr<SubsetMesh> createSphere(float radius, std::int32_t slices, std::int32_t stacks);
/// Number of its vertices.
std::int64_t sphereVertexCount(std::int32_t slices, std::int32_t stacks);

/// The teapot of computer graphics, 3.2 units from spout to handle, about the origin, upright, the spout along +x.
std::shared_ptr<SubsetMesh> createTeapot();

}  // namespace ql::utility
