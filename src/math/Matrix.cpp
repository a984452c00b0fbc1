#include "math/Matrix.h"

namespace ql::math {

Mat4 identity() { return scaling(1, 1, 1); }

Mat4 multiply(const Mat4& a, const Mat4& b) {
  return {a.m11 * b.m11 + a.m12 * b.m21 + a.m13 * b.m31 + a.m14 * b.m41,
          a.m11 * b.m12 + a.m12 * b.m22 + a.m13 * b.m32 + a.m14 * b.m42,
          a.m11 * b.m13 + a.m12 * b.m23 + a.m13 * b.m33 + a.m14 * b.m43,
          a.m11 * b.m14 + a.m12 * b.m24 + a.m13 * b.m34 + a.m14 * b.m44,

          a.m21 * b.m11 + a.m22 * b.m21 + a.m23 * b.m31 + a.m24 * b.m41,
          a.m21 * b.m12 + a.m22 * b.m22 + a.m23 * b.m32 + a.m24 * b.m42,
          a.m21 * b.m13 + a.m22 * b.m23 + a.m23 * b.m33 + a.m24 * b.m43,
          a.m21 * b.m14 + a.m22 * b.m24 + a.m23 * b.m34 + a.m24 * b.m44,

          a.m31 * b.m11 + a.m32 * b.m21 + a.m33 * b.m31 + a.m34 * b.m41,
          a.m31 * b.m12 + a.m32 * b.m22 + a.m33 * b.m32 + a.m34 * b.m42,
          a.m31 * b.m13 + a.m32 * b.m23 + a.m33 * b.m33 + a.m34 * b.m43,
          a.m31 * b.m14 + a.m32 * b.m24 + a.m33 * b.m34 + a.m34 * b.m44,

          a.m41 * b.m11 + a.m42 * b.m21 + a.m43 * b.m31 + a.m44 * b.m41,
          a.m41 * b.m12 + a.m42 * b.m22 + a.m43 * b.m32 + a.m44 * b.m42,
          a.m41 * b.m13 + a.m42 * b.m23 + a.m43 * b.m33 + a.m44 * b.m43,
          a.m41 * b.m14 + a.m42 * b.m24 + a.m43 * b.m34 + a.m44 * b.m44};
}

Mat4 transpose(const Mat4& m) {
  return {m.m11, m.m21, m.m31, m.m41, m.m12, m.m22, m.m32, m.m42,
          m.m13, m.m23, m.m33, m.m43, m.m14, m.m24, m.m34, m.m44};
}

// Cofactors over the determinants of the 2 × 2 blocks of the upper and the lower two rows. Double precision, because a
// projection with a far plane at thousands of its near plane cancels most of a float's digits.
Mat4 inverse(const Mat4& m) {
  const double a11 = m.m11, a12 = m.m12, a13 = m.m13, a14 = m.m14, a21 = m.m21, a22 = m.m22, a23 = m.m23, a24 = m.m24;
  const double a31 = m.m31, a32 = m.m32, a33 = m.m33, a34 = m.m34, a41 = m.m41, a42 = m.m42, a43 = m.m43, a44 = m.m44;

  const double s0 = a11 * a22 - a21 * a12, s1 = a11 * a23 - a21 * a13, s2 = a11 * a24 - a21 * a14;
  const double s3 = a12 * a23 - a22 * a13, s4 = a12 * a24 - a22 * a14, s5 = a13 * a24 - a23 * a14;
  const double c0 = a31 * a42 - a41 * a32, c1 = a31 * a43 - a41 * a33, c2 = a31 * a44 - a41 * a34;
  const double c3 = a32 * a43 - a42 * a33, c4 = a32 * a44 - a42 * a34, c5 = a33 * a44 - a43 * a34;

  const double determinant = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
  if (determinant == 0 || !std::isfinite(determinant)) return identity();
  const auto over = [determinant](double cofactor) { return static_cast<float>(cofactor / determinant); };
  return {over(a22 * c5 - a23 * c4 + a24 * c3),  over(-a12 * c5 + a13 * c4 - a14 * c3),
          over(a42 * s5 - a43 * s4 + a44 * s3),  over(-a32 * s5 + a33 * s4 - a34 * s3),
          over(-a21 * c5 + a23 * c2 - a24 * c1), over(a11 * c5 - a13 * c2 + a14 * c1),
          over(-a41 * s5 + a43 * s2 - a44 * s1), over(a31 * s5 - a33 * s2 + a34 * s1),
          over(a21 * c4 - a22 * c2 + a24 * c0),  over(-a11 * c4 + a12 * c2 - a14 * c0),
          over(a41 * s4 - a42 * s2 + a44 * s0),  over(-a31 * s4 + a32 * s2 - a34 * s0),
          over(-a21 * c3 + a22 * c1 - a23 * c0), over(a11 * c3 - a12 * c1 + a13 * c0),
          over(-a41 * s3 + a42 * s1 - a43 * s0), over(a31 * s3 - a32 * s1 + a33 * s0)};
}

Mat4 translation(float x, float y, float z) {
  Mat4 m = identity();
  m.m41 = x;
  m.m42 = y;
  m.m43 = z;
  return m;
}

Mat4 scaling(float x, float y, float z) {
  Mat4 m;
  m.m11 = x;
  m.m22 = y;
  m.m33 = z;
  m.m44 = 1;
  return m;
}

Mat4 rotationX(float radians) {
  const float c = std::cos(radians), s = std::sin(radians);
  Mat4 m = identity();
  m.m22 = c;
  m.m23 = s;
  m.m32 = -s;
  m.m33 = c;
  return m;
}

Mat4 rotationY(float radians) {
  const float c = std::cos(radians), s = std::sin(radians);
  Mat4 m = identity();
  m.m11 = c;
  m.m13 = -s;
  m.m31 = s;
  m.m33 = c;
  return m;
}

Mat4 rotationZ(float radians) {
  const float c = std::cos(radians), s = std::sin(radians);
  Mat4 m = identity();
  m.m11 = c;
  m.m12 = s;
  m.m21 = -s;
  m.m22 = c;
  return m;
}

Mat4 rotationYawPitchRoll(float yaw, float pitch, float roll) {
  return multiply(multiply(rotationZ(roll), rotationX(pitch)), rotationY(yaw));
}

Mat4 rotation(const Quaternion& q) {
  Mat4 m = identity();
  m.m11 = 1 - 2 * (q.y * q.y + q.z * q.z);
  m.m12 = 2 * (q.x * q.y + q.z * q.w);
  m.m13 = 2 * (q.x * q.z - q.y * q.w);
  m.m21 = 2 * (q.x * q.y - q.z * q.w);
  m.m22 = 1 - 2 * (q.x * q.x + q.z * q.z);
  m.m23 = 2 * (q.y * q.z + q.x * q.w);
  m.m31 = 2 * (q.x * q.z + q.y * q.w);
  m.m32 = 2 * (q.y * q.z - q.x * q.w);
  m.m33 = 1 - 2 * (q.x * q.x + q.y * q.y);
  return m;
}

Mat4 lookAt(const Vec3& eye, const Vec3& target, const Vec3& up) {
  const Vec3 z = normalize(subtract(target, eye));
  const Vec3 x = normalize(cross(up, z));
  const Vec3 y = cross(z, x);
  return {x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, -dot(x, eye), -dot(y, eye), -dot(z, eye), 1};
}

Mat4 perspective(float fieldOfView, float aspect, float nearPlane, float farPlane) {
  Mat4 m;
  m.m22 = 1 / std::tan(fieldOfView * 0.5f);
  m.m11 = m.m22 * aspect;
  m.m33 = farPlane / (farPlane - nearPlane);
  m.m34 = 1;
  m.m43 = -nearPlane * m.m33;
  return m;
}

Vec4 transform(const Vec3& p, const Mat4& m) {
  return {p.x * m.m11 + p.y * m.m21 + p.z * m.m31 + m.m41, p.x * m.m12 + p.y * m.m22 + p.z * m.m32 + m.m42,
          p.x * m.m13 + p.y * m.m23 + p.z * m.m33 + m.m43, p.x * m.m14 + p.y * m.m24 + p.z * m.m34 + m.m44};
}

Vec3 transformPoint(const Vec3& p, const Mat4& m) {
  const Vec4 v = transform(p, m);
  return {v.x / v.w, v.y / v.w, v.z / v.w};
}

Vec3 transformNormal(const Vec3& v, const Mat4& m) {
  return {v.x * m.m11 + v.y * m.m21 + v.z * m.m31, v.x * m.m12 + v.y * m.m22 + v.z * m.m32,
          v.x * m.m13 + v.y * m.m23 + v.z * m.m33};
}

Vec3 project(const Vec3& p, const Viewport& viewport, const Mat4& projection, const Mat4& view, const Mat4& world) {
  const Vec3 v = transformPoint(p, multiply(multiply(world, view), projection));
  return {static_cast<float>(viewport.x) + (1 + v.x) * static_cast<float>(viewport.width) * 0.5f,
          static_cast<float>(viewport.y) + (1 - v.y) * static_cast<float>(viewport.height) * 0.5f,
          viewport.minZ + v.z * (viewport.maxZ - viewport.minZ)};
}

Vec3 unproject(const Vec3& p, const Viewport& viewport, const Mat4& projection, const Mat4& view, const Mat4& world) {
  const Vec3 v{(p.x - static_cast<float>(viewport.x)) * 2 / static_cast<float>(viewport.width) - 1,
               1 - (p.y - static_cast<float>(viewport.y)) * 2 / static_cast<float>(viewport.height),
               (p.z - viewport.minZ) / (viewport.maxZ - viewport.minZ)};
  return transformPoint(v, inverse(multiply(multiply(world, view), projection)));
}

}  // namespace ql::math
