#pragma once

#include "Vec.h"

#include <vector>

namespace ql::maker {

/// A convex polygon. Its points run clockwise when seen from the side its plane's normal points to, as level files
/// store faces.
using Winding = std::vector<Vec3>;

/// Distance within which a point counts as lying on a plane, level units.
inline constexpr double kOnPlane = 0.01;

/// A square of side 2 * `extent` on a plane.
Winding windingOfPlane(const Plane& plane, double extent = 65536.0);
/// Plane of a winding with at least three points that are not in line.
Plane planeOfWinding(const Winding& winding);
double areaOf(const Winding& winding);
Bounds boundsOf(const Winding& winding);
Vec3 centreOf(const Winding& winding);

struct Split {
  Winding front;  ///< empty when nothing lies in front
  Winding back;
  bool onPlane = false;  ///< the whole winding lies on the plane; front and back are then empty
};
Split split(const Winding& winding, const Plane& plane, double epsilon = kOnPlane);
/// The part in front of (or on) the plane; empty when there is none. A winding that lies on the plane is returned
/// whole.
Winding clipFront(const Winding& winding, const Plane& plane, double epsilon = kOnPlane);

/// Joins two coplanar windings that share an edge when the result is convex; empty when it is not possible.
Winding merged(const Winding& a, const Winding& b, Vec3 normal);
/// Joins coplanar windings until no two can be joined.
void mergeAll(std::vector<Winding>& windings, Vec3 normal);

/// Cuts a convex polygon, which may have points in line, into triangles that all have an area; three indices each.
std::vector<int> triangulated(const Winding& winding);

}  // namespace ql::maker
