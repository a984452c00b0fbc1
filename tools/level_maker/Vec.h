#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace ql::maker {

/// A point, a direction (file space: z up, right-handed, level units) or a linear RGB colour.
struct Vec3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr double operator[](int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }
  constexpr double& operator[](int axis) { return axis == 0 ? x : axis == 1 ? y : z; }
  constexpr bool operator==(const Vec3&) const = default;
};

constexpr Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vec3 operator-(Vec3 a) { return {-a.x, -a.y, -a.z}; }
constexpr Vec3 operator*(Vec3 a, double s) { return {a.x * s, a.y * s, a.z * s}; }
constexpr Vec3 operator*(Vec3 a, Vec3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
constexpr Vec3& operator+=(Vec3& a, Vec3 b) { return a = a + b; }
constexpr double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vec3 cross(Vec3 a, Vec3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
inline double length(Vec3 a) { return std::sqrt(dot(a, a)); }
/// Unit vector; the zero vector stays zero.
inline Vec3 normalized(Vec3 a) {
  const double l = length(a);
  return l > 0.0 ? a * (1.0 / l) : a;
}
constexpr Vec3 mix(Vec3 a, Vec3 b, double t) { return a * (1.0 - t) + b * t; }

struct Bounds {
  Vec3 mins{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
            std::numeric_limits<double>::infinity()};
  Vec3 maxs = -mins;

  void add(Vec3 p) {
    for (int a = 0; a < 3; ++a) {
      mins[a] = std::min(mins[a], p[a]);
      maxs[a] = std::max(maxs[a], p[a]);
    }
  }
  void add(const Bounds& other) {
    add(other.mins);
    add(other.maxs);
  }
  /// True when the boxes share at least a point, each grown by `margin`.
  bool touches(const Bounds& o, double margin = 0.0) const {
    for (int a = 0; a < 3; ++a)
      if (mins[a] > o.maxs[a] + margin || maxs[a] < o.mins[a] - margin) return false;
    return true;
  }
};

/// normal . p = distance; points with a larger product are in front.
struct Plane {
  Vec3 normal;
  double distance = 0.0;

  constexpr double side(Vec3 p) const { return dot(normal, p) - distance; }
  constexpr Plane flipped() const { return {-normal, -distance}; }
};

/// True when both planes hold the same points and face the same way (within what the maker's integer-sized geometry can
/// differ by).
inline bool samePlane(const Plane& a, const Plane& b) {
  return dot(a.normal, b.normal) > 0.999999 && std::fabs(a.distance - b.distance) < 0.01;
}

}  // namespace ql::maker
