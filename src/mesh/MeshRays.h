/// @file
/// Rays against meshes.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>

namespace ql::mesh {

enum class RayTest : std::int32_t {
  Box = 1,
  Sphere = 2,
  Accurate = 3,
  HitBoxes = 4  ///< of actors; no mesh has any
};

/// A point of the world in a mesh's space: without the translation, along the rows of the matrix.
math::Vec3 toMeshSpace(const math::Vec3& point, const math::Mat4& worldMatrix);

/// Whether the ray from origin towards end (world coordinates; end gives the direction only) meets a mesh where it was
/// last drawn. Box and sphere are met at any distance, and are computed when they are missing. The accurate test takes
/// every three consecutive vertices of a group for a triangle, met at a distance from 0 to below the collision
/// precision; the first such triangle, in order of groups and vertices, becomes the last hit, in the mesh's space.
/// Meshes that are drawn from subsets have no vertices to meet.
bool collision(engine::EngineContext& context, std::int16_t slot, const math::Vec3& origin, const math::Vec3& end,
               RayTest test);

/// The first enabled mesh, in order of slots, that the ray meets; 0 when there is none.
std::int16_t firstMeshHit(engine::EngineContext& context, const math::Vec3& origin, const math::Vec3& end,
                          RayTest test);
/// Whether the ray meets the level, a mesh or the landscape, asked in this order until one is met.
bool collide(engine::EngineContext& context, const math::Vec3& start, const math::Vec3& end, RayTest test);

}  // namespace ql::mesh
