#pragma once

#include "Level.h"

#include <array>
#include <span>

namespace ql::maker {

/// Moves shapes into place: a matrix of whole numbers (quarter turns and mirrors) and an offset.
struct Placement {
  std::array<Vec3, 3> columns{Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}};
  Vec3 offset;

  Vec3 direction(Vec3 v) const { return columns[0] * v.x + columns[1] * v.y + columns[2] * v.z; }
  Vec3 point(Vec3 p) const { return direction(p) + offset; }
  bool mirrors() const { return dot(cross(columns[0], columns[1]), columns[2]) < 0.0; }
  /// This placement of a thing that was first placed by `inner`.
  Placement after(const Placement& inner) const;
};

/// Computes a brush's face windings and bounds from its planes. Returns false when the planes enclose nothing.
bool finishBrush(Brush& brush);

Brush boxBrush(Vec3 mins, Vec3 maxs, std::span<const int, 6> materials);  ///< materials: +x -x +y -y +z -z
/// A box whose top falls from the side `high` (0: +x, 1: -x, 2: +y, 3: -y) down to its bottom on the opposite side, or
/// to `low` above the bottom.
Brush wedgeBrush(Vec3 mins, Vec3 maxs, int high, double low, int side, int top);
/// An upright or lying prism over a convex outline. `axis` is its direction; the outline is given in the two other axes
/// (y z, x z or x y). Empty sides when the outline is not convex.
Brush prismBrush(int axis, double from, double to, std::vector<std::pair<double, double>> outline, int side, int caps);

void place(Brush& brush, const Placement& placement);
void place(Patch& patch, const Placement& placement);
void place(Mesh& mesh, const Placement& placement);

/// A surface of revolution about the line through `centre` along `axis`. The profile's points (odd count) are (position
/// along the axis, radius) control points; `pieces` quadratic arcs go around (at least 3). `inside`: the front faces
/// the axis.
Patch revolved(int axis, Vec3 centre, std::span<const std::pair<double, double>> profile, int pieces, bool inside,
               int material);

/// The part of an arched opening above its springing line: along `axis` (0 or 1) from `from` to `to`, centred on
/// `middle` on the other horizontal axis.
struct ArchShape {
  int axis = 0;
  double from = 0.0;
  double to = 0.0;
  double middle = 0.0;
  double spring = 0.0;  ///< height where the curve begins
  double radius = 0.0;  ///< half the opening's width
  double rise = 0.0;    ///< height of the curve above the springing line
};
/// The curved underside of an arch.
Patch archSoffit(const ArchShape& shape, int material);
/// The two corners between the curve and its surrounding rectangle, at one end (`atEnd`) of the arch.
std::array<Patch, 2> archSpandrels(const ArchShape& shape, bool atEnd, int material);
/// A flat band along the curve (a moulding on the wall around an arch), `width` wide.
Patch archBand(const ArchShape& shape, bool atEnd, double width, int material);
/// A level surface from a circle out to the square around it: eight pieces. `down`: seen from below.
Patch squareRing(Vec3 centre, double radius, double halfWidth, bool down, int material);
/// A small eight-sided lamp body: two pyramids base to base.
Mesh gem(Vec3 centre, double radius, double height, int material);

/// Texture coordinates of flat patches, like those of brush faces; see SurfaceMapping.h.
void measurePatch(Patch& patch, const Material& material);

}  // namespace ql::maker
