/// @file
/// What a hit test found.
#ifndef QUASARLENS3D_COLLISIONRESULT8_H
#define QUASARLENS3D_COLLISIONRESULT8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>

namespace Quasarlens3D {

namespace Detail {
struct CollisionObject;
}

/// Kinds of things that rays hit; hit tests take them ored.
enum CONST_QL_OBJECT_TYPE : std::int32_t {
  QL_COLLIDE_MESH = 1,
  QL_COLLIDE_TERRAIN = 2,
  QL_COLLIDE_LANDSCAPE = 4,
  QL_COLLIDE_BSPTREE = 8,
  QL_COLLIDE_OCTREE = 16,
  QL_COLLIDE_ACTOR = 32,
  QL_COLLIDE_PHYSICOBJECT = 64
};

/// The answer of a hit test (Scene8.MousePicking). Every operation throws Error 91 on nothing.
class QUASARLENS3D_API CollisionResult8 : public Detail::Handle<Detail::CollisionObject> {
 public:
  /// Nothing.
  CollisionResult8() noexcept;
  CollisionResult8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  Boolean IsCollision() const;
  /// Along the ray, as the test gave it; levels and meshes report 0.
  float GetCollisionDistance() const;
  /// Coordinates in the triangle that was hit; levels and meshes report 0.
  void GetCollisionTriangleUV(ByRef<float> tu, ByRef<float> tv) const;
  /// Normal and point of the engine's last hit, whoever asked for it: read them before the next test. Both are those of
  /// accurate tests; those of a mesh are in the mesh's own space, the normal's length is twice the triangle's area.
  Vec3 GetCollisionNormal() const;
  Vec3 GetImpactPoint() const;
  /// The mesh that was hit; nothing when it was something else.
  Mesh8 GetCollisionMesh() const;
  /// CONST_QL_OBJECT_TYPE: QL_COLLIDE_MESH, QL_COLLIDE_BSPTREE, QL_COLLIDE_LANDSCAPE; 0 when nothing was hit.
  std::int32_t GetCollisionObjectType() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
