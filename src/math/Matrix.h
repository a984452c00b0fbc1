/// @file
/// Matrices for row vectors in a left-handed space, as the rendering device takes them.
#pragma once

#include "math/Vector.h"

namespace ql::math {

Mat4 identity();
/// a · b: applies a first, then b.
Mat4 multiply(const Mat4& a, const Mat4& b);
Mat4 transpose(const Mat4& m);
/// The inverse; the identity when the determinant is 0.
Mat4 inverse(const Mat4& m);
Mat4 translation(float x, float y, float z);
Mat4 scaling(float x, float y, float z);
/// Rotations by radians about an axis; positive angles turn y to z, z to x, x to y.
Mat4 rotationX(float radians);
Mat4 rotationY(float radians);
Mat4 rotationZ(float radians);
/// Roll about z first, then pitch about x, then yaw about y; radians.
Mat4 rotationYawPitchRoll(float yaw, float pitch, float roll);
Mat4 rotation(const Quaternion& q);

/// Left-handed view matrix. Eye and target must differ and the direction must not be parallel to up; a degenerate view
/// gives zero axes.
Mat4 lookAt(const Vec3& eye, const Vec3& target, const Vec3& up);
/// Left-handed perspective. @param fieldOfView vertical, radians @param aspect height / width: the x scale is the y
/// scale times aspect, so that pictures are not stretched @param nearPlane,farPlane world units
Mat4 perspective(float fieldOfView, float aspect, float nearPlane, float farPlane);

/// The point (x, y, z, 1) · m, divided by the resulting w.
Vec3 transformPoint(const Vec3& p, const Mat4& m);
/// The direction (x, y, z, 0) · m.
Vec3 transformNormal(const Vec3& v, const Mat4& m);
struct Vec4 {
  float x = 0, y = 0, z = 0, w = 0;
};
Vec4 transform(const Vec3& p, const Mat4& m);

struct Viewport {
  std::int32_t x = 0, y = 0, width = 0, height = 0;
  float minZ = 0, maxZ = 1;
};
/// From world space to the screen: pixels and depth.
Vec3 project(const Vec3& p, const Viewport& viewport, const Mat4& projection, const Mat4& view, const Mat4& world);
/// From the screen (pixels, depth minZ to maxZ) back to the space that world maps from.
Vec3 unproject(const Vec3& p, const Viewport& viewport, const Mat4& projection, const Mat4& view, const Mat4& world);

}  // namespace ql::math
