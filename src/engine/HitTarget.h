/// @file
/// What rays can hit beside meshes, for those who cast them: the level and the landscape stand above them.
#pragma once

#include "math/Vector.h"

#include <cstdint>

namespace ql::engine {

inline constexpr float kLevelObject = -1, kLandscapeObject = -2;  ///< HitResult::objectId; meshes give their slot

/// What a ray test found. The normal and the point of a hit are the context's lastHitNormal and lastHitPoint.
struct HitResult {
  bool collision = false;
  float distance = 0;    ///< along the ray, world units, as the test gave it
  float tu = 0, tv = 0;  ///< triangle coordinates, as the test gave them
  float objectId = 0;    ///< a mesh's slot, kLevelObject, kLandscapeObject; 0: nothing
  std::int16_t texture = 0;
};

/// Something that answers ray tests.
class HitTarget {
 public:
  virtual ~HitTarget() = default;
  /// Tests the ray from start towards end, world coordinates; how far it reaches is the target's own rule. A hit sets
  /// lastHitNormal and lastHitPoint of the context.
  virtual HitResult castRay(const math::Vec3& start, const math::Vec3& end) = 0;
};

/// The targets that exist, null otherwise: context.get<HitTargets>(). Who registers itself takes itself out again
/// before it goes, if it is still the one registered.
struct HitTargets {
  HitTarget* level = nullptr;
  HitTarget* landscape = nullptr;
};

}  // namespace ql::engine
