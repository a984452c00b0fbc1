#include "mesh/MeshRays.h"

#include "engine/HitTarget.h"
#include "math/Ray.h"
#include "mesh/Build.h"
#include "mesh/MeshIndex.h"
#include "mesh/RayIndex.h"

#include <utility>

namespace ql::mesh {
namespace {

constexpr float kBoxReach = 4000;  // world units; the box probe looks as far as it likes all the same

/// The indices over all meshes.
struct MeshIndices {
  MeshIndex bounds{MeshIndex::Kind::Bounds}, triangles{MeshIndex::Kind::Triangles};
};

void needBounds(engine::EngineContext& context, std::int16_t slot) {
  if (!meshRecord(context, slot).boundsValid) computeBounds(context, MeshHandle{slot, 0});
}

bool rayHitsMesh(engine::EngineContext& context, MeshRecord& mesh, const math::Vec3& origin,
                 const math::Vec3& direction) {
  if (mesh.usesSubsets) return false;
  if (!mesh.rayIndex || !mesh.rayIndex->fits(mesh)) mesh.rayIndex = std::make_shared<RayIndex>(mesh);
  const auto hit = mesh.rayIndex->firstHit(mesh, origin, direction, context.collisionPrecision);
  if (!hit) return false;
  context.lastHitNormal = hit->normal;
  context.lastHitPoint = math::add(origin, math::scale(direction, hit->t));
  return true;
}

}  // namespace

math::Vec3 toMeshSpace(const math::Vec3& point, const math::Mat4& m) {
  const math::Vec3 p = math::subtract(point, {m.m41, m.m42, m.m43});
  return {math::dot(p, {m.m11, m.m12, m.m13}), math::dot(p, {m.m21, m.m22, m.m23}),
          math::dot(p, {m.m31, m.m32, m.m33})};
}

bool collision(engine::EngineContext& context, std::int16_t slot, const math::Vec3& origin, const math::Vec3& end,
               RayTest test) {
  MeshRecord& mesh = meshRecord(context, slot);
  const math::Vec3 o = toMeshSpace(origin, mesh.worldMatrix);
  const math::Vec3 d = math::normalize(math::subtract(toMeshSpace(end, mesh.worldMatrix), o));
  switch (test) {
    case RayTest::Box:
      needBounds(context, slot);
      return math::intersectBox(o, math::scale(d, kBoxReach), mesh.boxMin, mesh.boxMax);
    case RayTest::Sphere:
      needBounds(context, slot);
      return math::intersectSphere(o, d, mesh.sphereCenter, mesh.sphereRadius);
    case RayTest::Accurate:
      return rayHitsMesh(context, mesh, o, d);
    default:
      return false;
  }
}

std::int16_t firstMeshHit(engine::EngineContext& context, const math::Vec3& origin, const math::Vec3& end,
                          RayTest test) {
  if (test != RayTest::Box && test != RayTest::Sphere && test != RayTest::Accurate) return 0;
  MeshRegistry& registry = context.get<MeshRegistry>();
  MeshIndices& indices = context.get<MeshIndices>();
  for (const std::int16_t slot : std::exchange(registry.changes, {})) {
    registry.slots->at(slot)->noted = false;
    indices.bounds.change(slot);
    indices.triangles.change(slot);
  }
  MeshIndex& index = test == RayTest::Accurate ? indices.triangles : indices.bounds;
  for (const std::int16_t slot : index.candidates(context, origin, end)) {
    const MeshRecord& mesh = *registry.slots->at(slot);
    if (mesh.inUse && mesh.enabled && collision(context, slot, origin, end, test)) return slot;
  }
  return 0;
}

bool collide(engine::EngineContext& context, const math::Vec3& start, const math::Vec3& end, RayTest test) {
  const engine::HitTargets& targets = context.get<engine::HitTargets>();
  if (targets.level != nullptr && targets.level->castRay(start, end).collision) return true;
  if (firstMeshHit(context, start, end, test) != 0) return true;
  return targets.landscape != nullptr && targets.landscape->castRay(start, end).collision;
}

}  // namespace ql::mesh
