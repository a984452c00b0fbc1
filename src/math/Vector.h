/// @file
/// Vectors and colours: the arithmetic that the whole engine shares.
#pragma once

#include <Quasarlens3D/Types.h>

#include <cmath>
#include <cstdint>

namespace ql::math {

using Quasarlens3D::Color4;
using Quasarlens3D::ColorVertex;
using Quasarlens3D::Mat4;
using Quasarlens3D::NormalVertex;
using Quasarlens3D::Rect;
using Quasarlens3D::Vec3;

constexpr Vec3 add(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vec3 subtract(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vec3 scale(const Vec3& v, float s) { return {v.x * s, v.y * s, v.z * s}; }
constexpr Vec3 multiply(const Vec3& a, const Vec3& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
constexpr Vec3 negate(const Vec3& v) { return {-v.x, -v.y, -v.z}; }
constexpr float dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(const Vec3& v) { return std::sqrt(dot(v, v)); }
/// v / length; the zero vector when the length is 0.
inline Vec3 normalize(const Vec3& v) {
  const float l = length(v);
  return l > 0 ? Vec3{v.x / l, v.y / l, v.z / l} : Vec3{};
}
constexpr Vec3 midpoint(const Vec3& a, const Vec3& b) {
  return {(a.x + b.x) * 0.5f, (a.y + b.y) * 0.5f, (a.z + b.z) * 0.5f};
}
constexpr Vec3 lerp(const Vec3& a, const Vec3& b, float t) { return add(a, scale(subtract(b, a), t)); }
/// The largest of the three components.
constexpr float largest(const Vec3& v) {
  const float xy = v.x > v.y ? v.x : v.y;
  return xy > v.z ? xy : v.z;
}

/// Packs components 0 to 1 into ARGB, each times 255 rounded to nearest (halves to even). Negative components count as
/// 0; when one exceeds 255 after scaling the result is 0 (fully transparent black).
/// @throws std::domain_error when a component is not a number, std::overflow_error when one does not fit 32 bits
std::int32_t packColor(const Color4& color);
/// The components of a packed ARGB colour, 0 to 1.
Color4 unpackColor(std::uint32_t argb);

/// A plane a·x + b·y + c·z + d = 0.
struct Plane {
  float a = 0, b = 0, c = 0, d = 0;
};
/// Divides all four numbers by the length of (a, b, c); all zero when that is 0.
Plane normalize(const Plane& plane);
/// a·x + b·y + c·z + d: the signed distance when the plane is normalised.
constexpr float distance(const Plane& plane, const Vec3& p) {
  return plane.a * p.x + plane.b * p.y + plane.c * p.z + plane.d;
}

/// A rotation as a unit quaternion.
struct Quaternion {
  float x = 0, y = 0, z = 0, w = 1;
};
/// Spherical interpolation from a (t = 0) to b (t = 1) along the shorter arc.
Quaternion slerp(const Quaternion& a, const Quaternion& b, float t);
/// The rotation of a matrix's upper 3 × 3 part, which must be orthonormal.
Quaternion quaternionFromMatrix(const Mat4& matrix);

}  // namespace ql::math
