/// @file
/// Where meshes stand and how they move.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstdint>

namespace ql::mesh {

/// The next drawing rebuilds the world matrix from these. Degrees about x, y, z; rotation is about z first, then x,
/// then y.
void setPosition(MeshRecord& mesh, const math::Vec3& position);
void setRotation(MeshRecord& mesh, const math::Vec3& degrees);
void setScale(MeshRecord& mesh, const math::Vec3& scale);
/// Replaces the world matrix until the next of the setters above.
void setMatrix(engine::EngineContext& context, std::int16_t slot, const math::Mat4& matrix);
/// Builds the world matrix: scale, rotation (of a billboard: towards the camera's heading), position, and before all of
/// them the matrix that the parent was last drawn with.
void rebuildMatrix(engine::EngineContext& context, std::int16_t slot);

/// @param velocity world units per second @param gravity taken from its y per second
void setVelocity(MeshRecord& mesh, const math::Vec3& velocity, float gravity);
/// Moves by the velocity over the last frame's time, times a speed; gravity does not follow the speed.
/// @param checkCollision stops, for good, where the way meets the level, a mesh or the landscape: see collide
void moveMesh(engine::EngineContext& context, std::int16_t slot, float speed, bool checkCollision);

/// Mirrors the picture on a mesh's first four vertices: bottom left, top left, bottom right, top right.
/// @throws engine::EngineError 9 for a mesh of fewer than three vertices
void flipBillboard(MeshRecord& mesh, bool leftRight, bool topBottom);

}  // namespace ql::mesh
