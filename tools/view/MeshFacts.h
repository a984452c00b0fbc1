/// @file
/// What a mesh is like: the classes tell where it stands, but not how large it is. A saved record does.
#pragma once

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdint>
#include <vector>

namespace view {

struct Box {
  Quasarlens3D::Vec3 low, high;
};

struct MeshFacts {
  std::int32_t vertices = 0;
  Box box;                              ///< the mesh's own space
  float radius = 0;                     ///< from the box's centre to the farthest vertex
  std::vector<std::int16_t> materials;  ///< of each group, from group 1
};

/// Saves the mesh and reads the record. Names the mesh "view". @throws walk::Failure, Quasarlens3D::Error
MeshFacts factsOf(Quasarlens3D::Mesh8& mesh);

}  // namespace view
