#include "level/Queries.h"

namespace ql::level {
namespace {

constexpr float kFarthestGround = 10000;  // world units
constexpr float kDown = 5;                // how far below its start the downward ray's second point lies

math::Vec3 toFileSpace(const LevelState& level, const math::Vec3& point) {
  const math::Vec3 local = toLevelSpace(point, level.levelMatrix);
  return {-local.x, local.y, local.z};
}

void noteHit(LevelState& level, const math::Vec3& point, const math::Vec3& normal) {
  level.context.lastHitPoint = math::transformPoint(point, level.levelMatrix);
  level.context.lastHitNormal = math::transformNormal(normal, level.levelMatrix);
}

}  // namespace

std::optional<float> rayFaces(LevelState& level, const math::Vec3& start, const math::Vec3& end, float limit) {
  const math::Vec3 origin = toLevelSpace(start, level.levelMatrix);
  const math::Vec3 direction = math::normalize(math::subtract(toLevelSpace(end, level.levelMatrix), origin));
  const std::optional<FaceHit> found =
      level.faceCollision.firstHit(level.data, level.visible, origin, direction, limit);
  if (!found) return std::nullopt;
  noteHit(level, math::add(origin, math::scale(direction, found->distance)), found->normal);
  return found->distance;
}

float altitude(LevelState& level, const math::Vec3& point) {
  return point.y - rayFaces(level, point, {point.x, point.y - kDown, point.z}, kFarthestGround).value_or(0);
}

bool sphereCollides(LevelState& level, const math::Vec3& position, float radius, bool passSolid) {
  const bool records = level.kind == LevelKind::Quake3;
  descendSphere(level.data, toFileSpace(level, position), radius, passSolid && records, level.lastDescent);
  if (!records) level.lastDescent.touched.clear();
  return level.lastDescent.solid;
}

engine::HitResult moveSphere(LevelState& level, const math::Vec3& from, const math::Vec3& to, float radius) {
  engine::HitResult result;
  const bool solid = sphereCollides(level, to, radius, false);
  if (level.lastDescent.touched.empty() && !solid) return result;
  const math::Vec3 origin = toLevelSpace(from, level.levelMatrix);
  const math::Vec3 direction = math::normalize(math::subtract(toLevelSpace(to, level.levelMatrix), origin));
  const std::optional<SphereHit> found =
      level.faceCollision.nearestHit(level.data, level.lastDescent.touched, origin, direction, radius);
  if (!found && !solid) return result;
  result.collision = true;
  result.objectId = engine::kLevelObject;
  if (found) {
    result.distance = found->distance;
    noteHit(level, found->point, found->normal);
  } else {
    level.context.lastHitPoint = level.context.lastHitNormal = {};
  }
  return result;
}

bool lineOfSight(const LevelState& level, const math::Vec3& start, const math::Vec3& end, std::int32_t node) {
  if (level.data.nodes.empty()) return true;
  if (node < 0 || static_cast<std::size_t>(node) >= level.data.nodes.size())
    throw engine::EngineError(engine::kSubscript, "Subscript out of range");
  return lineSight(level.data, start, end, node);
}

}  // namespace ql::level
