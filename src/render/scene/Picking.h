/// @file
/// What lies under a point of the screen.
#pragma once

#include "engine/EngineContext.h"
#include "engine/HitTarget.h"
#include "mesh/MeshRays.h"

#include <cstdint>

namespace ql::render::scene {

/// Bits of what is looked at; the others select nothing.
inline constexpr std::int32_t kPickMeshes = 1, kPickLandscape = 4, kPickLevel = 8;

struct PickRay {
  math::Vec3 near, far;  ///< points on the near and on the far plane, world coordinates
};
/// The ray under a pixel.
PickRay pickRay(const engine::EngineContext& context, std::int32_t x, std::int32_t y);

/// The level, then the meshes in order of slots, then the landscape, under a pixel. A mesh that is met takes the place
/// of a level that was, and ends the search; so does a landscape that is met. Level and meshes report distance 0.
/// @param kinds bits of what is looked at, 0: everything
engine::HitResult pick(engine::EngineContext& context, std::int32_t x, std::int32_t y, std::int32_t kinds,
                       mesh::RayTest test);

}  // namespace ql::render::scene
