/// @file
/// Bullet's closest hits of rays and sweeps of spheres against triangles, for the programs that time rays.
#pragma once

#include "math/Vector.h"

#include <span>
#include <vector>

#include <BulletCollision/CollisionDispatch/btCollisionWorld.h>
#include <btBulletCollisionCommon.h>

namespace ql::bench {

class BulletWorld {
 public:
  /// @param corners three of each triangle; they outlive the world
  explicit BulletWorld(std::span<const math::Vec3> corners)
      : indices_(numbers(corners.size())),
        triangles_(static_cast<int>(corners.size() / 3), indices_.data(), 12, static_cast<int>(corners.size()),
                   const_cast<float*>(&corners[0].x), sizeof(math::Vec3)),
        shape_(&triangles_, true) {
    object_.setCollisionShape(&shape_);
    world_.addCollisionObject(&object_);
  }
  ~BulletWorld() { world_.removeCollisionObject(&object_); }
  BulletWorld(const BulletWorld&) = delete;
  BulletWorld& operator=(const BulletWorld&) = delete;

  bool ray(const math::Vec3& from, const math::Vec3& direction, float length) const {
    const btVector3 a = point(from), b = point(math::add(from, math::scale(direction, length)));
    btCollisionWorld::ClosestRayResultCallback closest(a, b);
    world_.rayTest(a, b, closest);
    return closest.hasHit();
  }
  bool sweep(float radius, const math::Vec3& from, const math::Vec3& direction, float length) const {
    const btVector3 a = point(from), b = point(math::add(from, math::scale(direction, length)));
    const btSphereShape ball(radius);
    btCollisionWorld::ClosestConvexResultCallback closest(a, b);
    world_.convexSweepTest(&ball, btTransform(btQuaternion::getIdentity(), a),
                           btTransform(btQuaternion::getIdentity(), b), closest);
    return closest.hasHit();
  }

 private:
  static btVector3 point(const math::Vec3& p) { return {p.x, p.y, p.z}; }
  static std::vector<int> numbers(std::size_t count) {
    std::vector<int> all(count);
    for (std::size_t i = 0; i < count; ++i) all[i] = static_cast<int>(i);
    return all;
  }

  std::vector<int> indices_;
  btTriangleIndexVertexArray triangles_;
  btBvhTriangleMeshShape shape_;
  btDefaultCollisionConfiguration configuration_;
  btCollisionDispatcher dispatcher_{&configuration_};
  btDbvtBroadphase broadphase_;
  btCollisionWorld world_{&dispatcher_, &broadphase_, &configuration_};
  btCollisionObject object_;
};

}  // namespace ql::bench
