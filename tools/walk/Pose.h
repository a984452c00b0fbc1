/// @file
/// Where the camera stands and what it looks at, world coordinates.
#pragma once

#include <cmath>

namespace walk {

struct Point {
  double x = 0, y = 0, z = 0;
  friend Point operator+(const Point& a, const Point& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend Point operator*(const Point& p, double s) { return {p.x * s, p.y * s, p.z * s}; }
};

inline double distance(const Point& a, const Point& b) { return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z); }

struct Pose {
  Point eye, look;
};

inline Pose lerp(const Pose& a, const Pose& b, double t) {
  return {a.eye + (b.eye - a.eye) * t, a.look + (b.look - a.look) * t};
}

}  // namespace walk
