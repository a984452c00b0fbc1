/// @file
/// What a host asks of a level in world coordinates.
#pragma once

#include "engine/HitTarget.h"
#include "level/LevelState.h"

namespace ql::level {

/// The distance to the first face, in order, that a ray from start through end meets below a limit; notes the point and
/// the normal as the engine's last hit. Nothing when there is none.
std::optional<float> rayFaces(LevelState& level, const math::Vec3& start, const math::Vec3& end, float limit);
/// The height of the first face below a point; the point's own when there is none within 10000 units.
float altitude(LevelState& level, const math::Vec3& point);
/// Whether a sphere reaches a solid leaf. @param passSolid as descendSphere; Half-Life levels don't know it
bool sphereCollides(LevelState& level, const math::Vec3& position, float radius, bool passSolid);
/// A sphere on its way: the nearest face within its radius on the way, among those of the leaves that it reaches at the
/// end; notes the last hit. A collision without a face has zero vectors and the distance 0.
engine::HitResult moveSphere(LevelState& level, const math::Vec3& from, const math::Vec3& to, float radius);
/// As level::lineSight. @throws EngineError 9 for a node that does not exist
bool lineOfSight(const LevelState& level, const math::Vec3& start, const math::Vec3& end, std::int32_t node);

}  // namespace ql::level
