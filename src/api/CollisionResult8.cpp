#include "api/Collisions.h"
#include "api/Guard.h"
#include "api/Meshes.h"

#include <utility>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::CollisionObject;

CollisionResult8::CollisionResult8() noexcept = default;
CollisionResult8::CollisionResult8(std::nullptr_t) noexcept : Handle(nullptr) {}

Boolean CollisionResult8::IsCollision() const {
  return call(*this, [](CollisionObject& self) { return self.result.collision; });
}
float CollisionResult8::GetCollisionDistance() const {
  return call(*this, [](CollisionObject& self) { return self.result.distance; });
}
void CollisionResult8::GetCollisionTriangleUV(ByRef<float> tu, ByRef<float> tv) const {
  call(*this, [&](CollisionObject& self) {
    *tu = self.result.tu;
    *tv = self.result.tv;
  });
}
Vec3 CollisionResult8::GetCollisionNormal() const {
  return call(*this, [](CollisionObject& self) { return self.context->lastHitNormal; });
}
Vec3 CollisionResult8::GetImpactPoint() const {
  return call(*this, [](CollisionObject& self) { return self.context->lastHitPoint; });
}
Mesh8 CollisionResult8::GetCollisionMesh() const {
  return call(*this, [](CollisionObject& self) {
    const auto slot = static_cast<std::int32_t>(self.result.objectId);
    return slot > 0 ? api::wrap(mesh::meshRecord(*self.context, slot).handle.lock()) : nullptr;
  });
}
std::int32_t CollisionResult8::GetCollisionObjectType() const {
  return call(*this, [](CollisionObject& self) -> std::int32_t {
    const float id = self.result.objectId;
    if (id == engine::kLevelObject) return QL_COLLIDE_BSPTREE;
    if (id == engine::kLandscapeObject) return QL_COLLIDE_LANDSCAPE;
    return id > 0 ? QL_COLLIDE_MESH : 0;
  });
}

}  // namespace Quasarlens3D

namespace ql::api {

Quasarlens3D::CollisionResult8 wrap(const engine::HitResult& result) {
  auto object = std::make_shared<Quasarlens3D::Detail::CollisionObject>();
  object->result = result;
  return Access::make<Quasarlens3D::CollisionResult8>(std::move(object));
}

}  // namespace ql::api
