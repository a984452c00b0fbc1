/// @file
/// From a file's faces to the one triangle list that a level is drawn from.
#pragma once

#include "level/CurvePatch.h"
#include "level/LevelData.h"

#include <cstdint>
#include <vector>

namespace ql::level {

/// All faces' triangles one after another, and where each face's are.
struct BuiltFaces {
  std::vector<FaceRecord> records;
  std::vector<LevelVertex> vertices;
  std::int32_t patches = 0;        ///< curved faces that were built
  std::uint32_t badPatches = 0;    ///< of which so many have control points that span no area
  std::uint32_t crowdedFaces = 0;  ///< left empty, since the level's vertices would be too many
};

/// Expands polygons, triangle meshes and curved faces; other faces stay empty. Texture fields are filled as for plain
/// textured faces. @param curvePrecision 0 to 2
BuiltFaces buildFaces(const Q3Bsp& level, std::int32_t curvePrecision);

/// The sphere around a leaf's box.
LeafSphere leafSphere(const Leaf& leaf);

}  // namespace ql::level
