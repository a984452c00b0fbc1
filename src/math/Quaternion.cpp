#include "math/Vector.h"

namespace ql::math {

Quaternion slerp(const Quaternion& a, const Quaternion& b, float t) {
  float cosine = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
  // q and -q are the same rotation; the one on a's side gives the shorter arc.
  const float side = cosine < 0 ? -1.0f : 1.0f;
  cosine *= side;

  float weightA = 1 - t, weightB = t;
  constexpr float kNearlyEqual = 0.999999f;  // above, the sine is too small to divide by and the arc is straight
  if (cosine < kNearlyEqual) {
    const float angle = std::acos(cosine), sine = std::sin(angle);
    weightA = std::sin(weightA * angle) / sine;
    weightB = std::sin(weightB * angle) / sine;
  }
  weightB *= side;
  return {a.x * weightA + b.x * weightB, a.y * weightA + b.y * weightB, a.z * weightA + b.z * weightB,
          a.w * weightA + b.w * weightB};
}

// The largest of the four components is found from the diagonal and the other three are divided by it, which keeps the
// division away from 0 for every rotation.
Quaternion quaternionFromMatrix(const Mat4& m) {
  const float trace = m.m11 + m.m22 + m.m33;
  if (trace > 0) {
    const float root = std::sqrt(trace + 1), s = 0.5f / root;
    return {(m.m23 - m.m32) * s, (m.m31 - m.m13) * s, (m.m12 - m.m21) * s, root * 0.5f};
  }
  if (m.m11 >= m.m22 && m.m11 >= m.m33) {
    const float root = std::sqrt(1 + m.m11 - m.m22 - m.m33), s = 0.5f / root;
    return {root * 0.5f, (m.m12 + m.m21) * s, (m.m31 + m.m13) * s, (m.m23 - m.m32) * s};
  }
  if (m.m22 >= m.m33) {
    const float root = std::sqrt(1 + m.m22 - m.m11 - m.m33), s = 0.5f / root;
    return {(m.m12 + m.m21) * s, root * 0.5f, (m.m23 + m.m32) * s, (m.m31 - m.m13) * s};
  }
  const float root = std::sqrt(1 + m.m33 - m.m11 - m.m22), s = 0.5f / root;
  return {(m.m31 + m.m13) * s, (m.m23 + m.m32) * s, root * 0.5f, (m.m12 - m.m21) * s};
}

}  // namespace ql::math
