/// @file
/// Ray tests that picking and collision rest on.
#pragma once

#include "math/Vector.h"

namespace ql::math {

/// Where a ray meets a triangle.
struct TriangleHit {
  bool hit = false;
  float t = 0;         ///< distance in multiples of the direction; negative behind the origin
  float u = 0, v = 0;  ///< barycentric coordinates relative to p1 and p2
};

/// Two-sided ray/triangle test (Möller and Trumbore, "Fast, Minimum Storage Ray/Triangle Intersection", 1997). A ray
/// parallel to the triangle misses; hits behind the origin count, their t is negative.
TriangleHit intersectTriangle(const Vec3& origin, const Vec3& direction, const Vec3& p0, const Vec3& p1,
                              const Vec3& p2);

/// Whether a ray (any t >= 0) meets an axis-aligned box, faces included.
bool intersectBox(const Vec3& origin, const Vec3& direction, const Vec3& minimum, const Vec3& maximum);
/// Whether a ray (any t >= 0) meets a sphere.
bool intersectSphere(const Vec3& origin, const Vec3& direction, const Vec3& center, float radius);

}  // namespace ql::math
