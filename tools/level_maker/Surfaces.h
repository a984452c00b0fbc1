#pragma once

#include "Level.h"
#include "Tree.h"

namespace ql::maker {

/// What can be seen of one side of a brush: convex pieces on one plane that share a material and a lightmap block.
struct Surface {
  int brush = 0;
  Plane plane;
  int material = 0;
  Winding whole;  ///< the side before anything was cut away; "fit" pictures are measured on it
  std::vector<Winding> pieces;
};

/// The sides of the structural brushes without what lies in other structural brushes: the border of the solid
/// structure.
std::vector<Surface> structureSurfaces(const Level& level);

/// The sides of all brushes without their hidden parts. Structural brushes and coplanar neighbours cut; a detail brush
/// otherwise only removes pieces that it covers whole, since cutting around it would make many small faces for nothing.
std::vector<Surface> visibleSurfaces(const Level& level);

/// Keeps what lies in leaves that are not solid.
void dropOutside(std::vector<Surface>& surfaces, const Tree& tree);

/// Puts a point into every edge where a neighbour has a corner, so that neighbours share all their edge points and no
/// cracks show.
void closeCracks(std::vector<Surface>& surfaces);

/// Small faces of detail brushes that stand close to each other and share a material are drawn together; this numbers
/// such groups. 0: drawn alone.
int groupOf(const Level& level, const Surface& surface);

/// Texture axes of a plane: `across` to the right and `down` as seen from its front (north up on floors).
struct SurfaceAxes {
  Vec3 across;
  Vec3 down;
};
SurfaceAxes axesOf(Vec3 normal);

/// Texture coordinates of a point of a surface.
std::pair<double, double> textureAt(const Surface& surface, const Material& material, Vec3 p);

}  // namespace ql::maker
