#include "math/Ray.h"

#include <algorithm>
#include <limits>

namespace ql::math {

TriangleHit intersectTriangle(const Vec3& origin, const Vec3& direction, const Vec3& p0, const Vec3& p1,
                              const Vec3& p2) {
  TriangleHit result;
  const Vec3 edge1 = subtract(p1, p0), edge2 = subtract(p2, p0);
  const Vec3 p = cross(direction, edge2);
  const float determinant = dot(edge1, p);
  if (determinant == 0) return result;

  // The comparisons are written so that a value that is not a number misses.
  const float inverse = 1 / determinant;
  const Vec3 t = subtract(origin, p0);
  result.u = dot(t, p) * inverse;
  if (!(result.u >= 0 && result.u <= 1)) return result;

  const Vec3 q = cross(t, edge1);
  result.v = dot(direction, q) * inverse;
  const float sum = result.u + result.v;
  if (!(result.v >= 0 && sum <= 1)) return result;

  result.t = dot(edge2, q) * inverse;
  result.hit = true;
  return result;
}

bool intersectBox(const Vec3& origin, const Vec3& direction, const Vec3& minimum, const Vec3& maximum) {
  float enter = 0, leave = std::numeric_limits<float>::infinity();
  // Narrows [enter, leave] to where the ray is between the two planes of an axis.
  const auto slab = [&](float from, float along, float low, float high) {
    if (along == 0) return from >= low && from <= high;
    float first = (low - from) / along, last = (high - from) / along;
    if (first > last) std::swap(first, last);
    enter = std::max(enter, first);
    leave = std::min(leave, last);
    return enter <= leave;
  };
  return slab(origin.x, direction.x, minimum.x, maximum.x) && slab(origin.y, direction.y, minimum.y, maximum.y) &&
         slab(origin.z, direction.z, minimum.z, maximum.z);
}

bool intersectSphere(const Vec3& origin, const Vec3& direction, const Vec3& center, float radius) {
  const Vec3 away = subtract(origin, center);
  const float outside = dot(away, away) - radius * radius;
  if (outside <= 0) return true;
  const float along = dot(away, direction);
  return along < 0 && along * along >= dot(direction, direction) * outside;
}

}  // namespace ql::math
