#pragma once

#include "Winding.h"

#include <string>
#include <utility>
#include <vector>

namespace ql::maker {

/// How a material's picture lies on a surface.
enum class Mapping {
  World,      ///< repeated by position: across and down the surface
  FitHeight,  ///< repeated across, once over the surface's height
  Fit,        ///< once over the whole surface
};

struct Material {
  std::string name;     ///< as the description calls it
  std::string texture;  ///< picture name inside the texture folder
  double width = 128;   ///< level units per repeat
  double height = 128;
  double density = 0;  ///< level units per lightmap sample; 0: the level's own
  Mapping mapping = Mapping::World;
  bool lit = true;  ///< false: drawn at full brightness, without a lightmap, and casts no shadow
  bool sky = false;
  bool liquid = false;
};

struct BrushSide {
  Plane plane;  ///< facing out of the brush
  int material = 0;
  Winding winding;
};

/// A convex solid.
struct Brush {
  std::vector<BrushSide> sides;
  Bounds bounds;
  bool detail = false;  ///< does not cut the tree and does not block sight
  bool liquid = false;

  bool contains(Vec3 p, double margin = 0.0) const {
    for (int a = 0; a < 3; ++a)
      if (p[a] < bounds.mins[a] || p[a] > bounds.maxs[a]) return false;
    for (const BrushSide& s : sides)
      if (s.plane.side(p) > -margin) return false;
    return true;
  }
};

struct ControlPoint {
  Vec3 position;
  double u = 0.0;
  double v = 0.0;
};

/// A grid of biquadratic 3 x 3 pieces. Its front is where the cross product of "next column" and "next row" points to.
struct Patch {
  int material = 0;
  int width = 3;  ///< columns, odd
  int height = 3;
  std::vector<ControlPoint> points;  ///< row by row

  const ControlPoint& at(int column, int row) const { return points[static_cast<std::size_t>(row * width + column)]; }
  ControlPoint& at(int column, int row) { return points[static_cast<std::size_t>(row * width + column)]; }
};

/// Loose triangles (clockwise from their front), drawn unlit.
struct Mesh {
  int material = 0;
  std::vector<ControlPoint> points;
  std::vector<int> indices;
};

struct Light {
  Vec3 origin;
  Vec3 colour{1, 1, 1};
  double power = 100.0;  ///< brightness at 100 units is power / 100
  double radius = 6.0;   ///< of the shining ball; larger is softer
};

struct Sun {
  Vec3 direction{0, 0, 1};  ///< towards the sun
  Vec3 colour{1, 1, 1};     ///< times its strength
  double radius = 0.02;     ///< tangent of half its apparent size
};

struct SkyLight {
  Vec3 zenith{0.3, 0.5, 0.9};
  Vec3 horizon{0.7, 0.8, 0.9};
};

/// Two points of a camera: where it stands and what it looks at.
struct Pose {
  Vec3 eye;
  Vec3 look;
};

using Entity = std::vector<std::pair<std::string, std::string>>;

/// Everything a description file says.
struct Level {
  std::string name = "level";
  double density = 12.0;
  std::vector<Material> materials;
  std::vector<Brush> brushes;
  std::vector<Patch> patches;
  std::vector<Mesh> meshes;
  std::vector<Light> lights;
  Sun sun;
  SkyLight skyLight;
  double exposure = 1.0;
  std::vector<Entity> entities;
  std::vector<Pose> pathKeys;
  std::vector<Pose> poses;
};

}  // namespace ql::maker
