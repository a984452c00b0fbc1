#include "render/scene/Picking.h"

namespace ql::render::scene {

PickRay pickRay(const engine::EngineContext& context, std::int32_t x, std::int32_t y) {
  const auto under = [&](float depth) {
    return math::unproject({static_cast<float>(x), static_cast<float>(y), depth}, context.viewport,
                           context.projectionMatrix, context.viewMatrix, context.worldMatrix);
  };
  return {under(0), under(1)};
}

engine::HitResult pick(engine::EngineContext& context, std::int32_t x, std::int32_t y, std::int32_t kinds,
                       mesh::RayTest test) {
  const auto wanted = [kinds](std::int32_t kind) { return kinds == 0 || (kinds & kind) != 0; };
  const engine::HitTargets& targets = context.get<engine::HitTargets>();
  const PickRay ray = pickRay(context, x, y);
  engine::HitResult result;
  if (wanted(kPickLevel) && targets.level != nullptr && targets.level->castRay(ray.near, ray.far).collision)
    result = {.collision = true, .objectId = engine::kLevelObject};
  if (wanted(kPickMeshes)) {
    const std::int16_t slot = mesh::firstMeshHit(context, context.cameraPosition, ray.far, test);
    if (slot != 0) return {.collision = true, .objectId = static_cast<float>(slot)};
  }
  if (wanted(kPickLandscape) && targets.landscape != nullptr) {
    // A landscape that is missed says nothing about a level that was hit, but it may have overwritten the last hit.
    const math::Vec3 normal = context.lastHitNormal, point = context.lastHitPoint;
    engine::HitResult landscape = targets.landscape->castRay(context.cameraPosition, ray.far);
    if (landscape.collision || !result.collision) return landscape;
    context.lastHitNormal = normal;
    context.lastHitPoint = point;
  }
  return result;
}

}  // namespace ql::render::scene
