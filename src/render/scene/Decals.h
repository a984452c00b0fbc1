/// @file
/// Flat pieces that the scene places: billboards, and decals on surfaces.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ql::render::scene {

/// Where a billboard stands and how large it is, world units.
struct BillboardPlace {
  float x = 0, y = 0, z = 0, width = 0, height = 0;
};
/// A rectangle on its lower edge that turns about y with the camera. @param texture index in the texture table
std::shared_ptr<mesh::MeshHandle> createBillboard(engine::EngineContext& context, const std::string& name,
                                                  std::int16_t texture, const BillboardPlace& place);

/// A square one normal's length in front of a position, facing along the normal, that adds its texture's light. The
/// engine keeps it until its time is over, for good without one. @param size of its side, world units
/// @param deathTime milliseconds; 0: never
std::shared_ptr<mesh::MeshHandle> createDecal(engine::EngineContext& context, const math::Vec3& position,
                                              const math::Vec3& normal, std::int16_t texture, float size,
                                              float deathTime);

/// Lets go of the decals whose time is over, or of all.
void dropDeadDecals(engine::EngineContext& context);
void dropAllDecals(engine::EngineContext& context);

}  // namespace ql::render::scene
